# Installs BUILD, then builds and runs a program that finds the package; then configures it once more
# with the tree at SOURCE as a subproject. GENERATOR, COMPILER, TOOLCHAIN and EMULATOR are those of BUILD.
set(work "${BUILD}/tests/package")
set(here "${CMAKE_CURRENT_LIST_DIR}")
set(options -G "${GENERATOR}" -D CMAKE_BUILD_TYPE=Release)
if(TOOLCHAIN)
    list(APPEND options --toolchain "${TOOLCHAIN}")
else()
    list(APPEND options -D "CMAKE_CXX_COMPILER=${COMPILER}" -D "CMAKE_CXX_FLAGS=${FLAGS}")
endif()

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${work}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${work}/installed")
run("${CMAKE_COMMAND}" -S "${here}" -B "${work}/found" ${options}
    -D "CMAKE_PREFIX_PATH=${work}/installed" -D "CMAKE_FIND_ROOT_PATH=${work}/installed")
run("${CMAKE_COMMAND}" --build "${work}/found")
set(program "${work}/found/consumer")
if(TOOLCHAIN)
    set(program "${program}.exe")
    file(GLOB libraries "${work}/installed/bin/*.dll")
    file(COPY ${libraries} DESTINATION "${work}/found")
endif()
run(${EMULATOR} "${program}")

run("${CMAKE_COMMAND}" -S "${here}" -B "${work}/subproject" ${options}
    -D "MDTOOLS_SOURCE_DIR=${SOURCE}")
file(REMOVE_RECURSE "${work}")

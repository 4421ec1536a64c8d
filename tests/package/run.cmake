# Installs BUILD; then builds and runs programs that find the package: one of the test, the README's
# first one, and the example girder; then configures the test's once more with the tree at SOURCE as a
# subproject. GENERATOR, COMPILER, TOOLCHAIN and EMULATOR are those of BUILD.
set(work "${BUILD}/tests/package")
set(here "${CMAKE_CURRENT_LIST_DIR}")
set(options -G "${GENERATOR}" -D CMAKE_BUILD_TYPE=Release)
if(TOOLCHAIN)
    list(APPEND options --toolchain "${TOOLCHAIN}")
    set(suffix ".exe")
else()
    list(APPEND options -D "CMAKE_CXX_COMPILER=${COMPILER}" -D "CMAKE_CXX_FLAGS=${FLAGS}")
endif()

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${work}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${work}/installed")

# build(SOURCE NAME OPTION...): builds what lies in SOURCE with the installed package, in the folder NAME.
function(build source name)
    run("${CMAKE_COMMAND}" -S "${source}" -B "${work}/${name}" ${options} ${ARGN}
        -D "CMAKE_PREFIX_PATH=${work}/installed" -D "CMAKE_FIND_ROOT_PATH=${work}/installed")
    run("${CMAKE_COMMAND}" --build "${work}/${name}" --parallel 2)
    if(TOOLCHAIN)
        file(GLOB libraries "${work}/installed/bin/*.dll")
        file(COPY ${libraries} DESTINATION "${work}/${name}")
    endif()
endfunction()

# expect(CODE OUTPUT ERRORS): what the README's program does with the bridge.girder that is there.
function(expect expectedCode expectedOutput expectedErrors)
    execute_process(COMMAND ${EMULATOR} "${work}/consumer/readme${suffix}"
        WORKING_DIRECTORY "${work}/consumer"
        RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    string(REPLACE "\r" "" texts "${output}|${errors}")
    if(NOT "${code}|${texts}" STREQUAL "${expectedCode}|${expectedOutput}|${expectedErrors}")
        message(FATAL_ERROR "The README's program ended with ${code}|${texts}")
    endif()
endfunction()

# The first program of the README, as it is there.
file(READ "${SOURCE}/README.md" readme)
string(REGEX MATCH "```cpp\n([^`]*)```" program "${readme}")
file(WRITE "${work}/readme.cpp" "${CMAKE_MATCH_1}")

build("${here}" consumer -D "README_PROGRAM=${work}/readme.cpp")
run(${EMULATOR} "${work}/consumer/consumer${suffix}")
set(model "${work}/consumer/bridge.girder")
expect(1 "" "bridge.girder: cannot be read\n")
file(WRITE "${model}" "( title = 7 )")
expect(1 "" "bridge.girder: Tools::Smart::WrongType: title, want [text], get [decimal]\n")
file(WRITE "${model}" "( title = \"Footbridge\" )")
expect(0 "Footbridge\n" "")

build("${SOURCE}/examples/girder" girder)
run(${EMULATOR} "${work}/girder/girder${suffix}" --version)

run("${CMAKE_COMMAND}" -S "${here}" -B "${work}/subproject" ${options}
    -D "MDTOOLS_SOURCE_DIR=${SOURCE}")
file(REMOVE_RECURSE "${work}")

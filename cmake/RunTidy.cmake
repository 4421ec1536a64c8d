# Runs clang-tidy on SOURCE with the compile command from BUILD, then notes success in STAMP and the
# headers that were read in STAMP.d.
file(READ "${BUILD}/compile_commands.json" commands)
string(JSON count LENGTH "${commands}")
math(EXPR last "${count} - 1")
foreach(i RANGE ${last})
    string(JSON file GET "${commands}" ${i} file)
    if(file STREQUAL SOURCE)
        string(JSON command GET "${commands}" ${i} command)
        break()
    endif()
endforeach()
if(NOT command)
    # A source of another configuration (an optional part that is not built here).
    file(TOUCH "${STAMP}")
    file(WRITE "${STAMP}.d" "${STAMP}: ${SOURCE}\n")
    return()
endif()

execute_process(COMMAND "${TIDY}" --quiet -p "${BUILD}" "${SOURCE}"
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT result EQUAL 0)
    message("${output}${errors}")
    message(FATAL_ERROR "clang-tidy found something in ${SOURCE}")
endif()

separate_arguments(arguments UNIX_COMMAND "${command}")
list(FIND arguments -o position)
if(position GREATER -1)
    list(REMOVE_AT arguments ${position})
    list(REMOVE_AT arguments ${position})
endif()
list(REMOVE_ITEM arguments -c)
execute_process(COMMAND ${arguments} -MM -MT "${STAMP}" -MF "${STAMP}.d"
    WORKING_DIRECTORY "${BUILD}" COMMAND_ERROR_IS_FATAL ANY)
file(TOUCH "${STAMP}")

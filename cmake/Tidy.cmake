# `tidy`: clang-tidy over every source of the library, its tools and examples. A file is looked at
# again only when it, a header that it includes, or the list of checks has changed.
find_program(MDTOOLS_CLANG_TIDY clang-tidy)
if(NOT MDTOOLS_CLANG_TIDY OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    return()
endif()

file(GLOB_RECURSE tidySources CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}"
    text/*.cpp store/*.cpp settings/*.cpp versions/*.cpp trace/*.cpp files/*.cpp diagnostics/*.cpp
    smart/*.cpp formula/*.cpp commands/*.cpp threads/*.cpp process/*.cpp format/*.cpp
    platform/posix/*.cpp siblings/*.cpp tools/*.cpp examples/*.cpp)
set(stamps)
foreach(source IN LISTS tidySources)
    set(stamp "${PROJECT_BINARY_DIR}/tidy/${source}.stamp")
    get_filename_component(stampDirectory "${stamp}" DIRECTORY)
    file(MAKE_DIRECTORY "${stampDirectory}")
    add_custom_command(OUTPUT "${stamp}"
        COMMAND "${CMAKE_COMMAND}"
            -D "TIDY=${MDTOOLS_CLANG_TIDY}" -D "BUILD=${PROJECT_BINARY_DIR}"
            -D "SOURCE=${PROJECT_SOURCE_DIR}/${source}" -D "STAMP=${stamp}"
            -P "${PROJECT_SOURCE_DIR}/cmake/RunTidy.cmake"
        DEPENDS "${source}" "${PROJECT_SOURCE_DIR}/.clang-tidy" cmake/RunTidy.cmake
        DEPFILE "${stamp}.d"
        WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
        COMMENT "clang-tidy ${source}" VERBATIM)
    list(APPEND stamps "${stamp}")
endforeach()
add_custom_target(tidy DEPENDS ${stamps})

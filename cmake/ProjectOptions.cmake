# Compiler settings that all targets of this tree share.

include(CheckCXXSourceCompiles)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(PROJECT_IS_TOP_LEVEL)
    # Programs find the library beside themselves, on Windows too.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
endif()

set(previousStandardFlags "${CMAKE_REQUIRED_FLAGS}")
if(NOT MSVC)
    set(CMAKE_REQUIRED_FLAGS "-std=c++20")
endif()
check_cxx_source_compiles("
    #include <string>
    constinit const std::string text = \"*\";
    int main() { return text.size() == 1 ? 0 : 1; }" MDTOOLS_HAS_CONSTINIT_STRING)
set(CMAKE_REQUIRED_FLAGS "${previousStandardFlags}")

# Warnings for this project's own code; nothing of it reaches the library's users.
add_library(mdtools_warnings INTERFACE)
if(MSVC)
    # 4251: members of standard types in exported classes are private and only used by the library.
    # 4275: exported exceptions derive from standard ones, which every user shares with the library.
    target_compile_options(mdtools_warnings INTERFACE /W4 /permissive- /utf-8 /wd4251 /wd4275)
    # The secure variants that the compiler proposes exist on one platform only.
    target_compile_definitions(mdtools_warnings INTERFACE _CRT_SECURE_NO_WARNINGS)
    if(MDTOOLS_WARNINGS_AS_ERRORS)
        target_compile_options(mdtools_warnings INTERFACE /WX)
    endif()
else()
    target_compile_options(mdtools_warnings INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor)
    # Clang counts changes of sign among conversions, GCC does not; the sources are held to the latter.
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        target_compile_options(mdtools_warnings INTERFACE -Wno-sign-conversion)
    endif()
    if(MDTOOLS_WARNINGS_AS_ERRORS)
        target_compile_options(mdtools_warnings INTERFACE -Werror)
    endif()
endif()
if(WIN32)
    # All system calls are the narrow ones, and the system's min and max macros stay out.
    target_compile_definitions(mdtools_warnings INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

# `objects` and the shared `library` made of them see the same headers and system libraries.
function(mdtools_configure_library objects library)
    target_include_directories(${objects}
        PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>"
        PRIVATE "${PROJECT_SOURCE_DIR}")
    target_compile_definitions(${objects} PRIVATE MDTOOLS_EXPORTS
        $<$<BOOL:${MDTOOLS_HAS_CONSTINIT_STRING}>:MDTOOLS_HAS_CONSTINIT_STRING>)
    # GCC would mark variables of the standard library's templates as unique in the process, and a
    # library that holds one of those is never unloaded.
    if(NOT WIN32)
        target_compile_options(${objects} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
    endif()
    target_compile_features(${objects} PUBLIC cxx_std_20)
    if(NOT MSVC)
        # The library's calls of its own functions are not to be replaced from outside; so they may be
        # inlined, exported or not.
        target_compile_options(${objects} PRIVATE -fno-semantic-interposition)
    endif()
    target_link_libraries(${objects} PRIVATE mdtools_warnings ${MDTOOLS_SYSTEM_LIBRARIES})
    target_include_directories(${library}
        INTERFACE "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>"
                  "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    target_compile_features(${library} INTERFACE cxx_std_20)
    set_target_properties(${library} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} EXPORT_NAME mdtools)
    if(WIN32)
        # The DLL's name carries no version and no prefix.
        set_target_properties(${library} PROPERTIES PREFIX "" OUTPUT_NAME mdtools)
    endif()
endfunction()

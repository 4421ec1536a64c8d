# Installation, and the package that find_package(MdTools) finds.
include(CMakePackageConfigHelpers)

install(TARGETS mdtools EXPORT MdToolsTargets
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(FILES LICENSE docs/contents.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/mdtools" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")

set(packageDirectory "${CMAKE_INSTALL_LIBDIR}/cmake/MdTools")
install(EXPORT MdToolsTargets NAMESPACE MdTools:: DESTINATION "${packageDirectory}")
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/MdToolsConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/MdToolsConfig.cmake" INSTALL_DESTINATION "${packageDirectory}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/MdToolsConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/MdToolsConfig.cmake"
    "${PROJECT_BINARY_DIR}/MdToolsConfigVersion.cmake"
    "${CMAKE_CURRENT_LIST_DIR}/MdToolsVersionResource.cmake"
    "${CMAKE_CURRENT_LIST_DIR}/version_resource.rc.in"
    "${CMAKE_CURRENT_LIST_DIR}/version_section.cpp.in" DESTINATION "${packageDirectory}")

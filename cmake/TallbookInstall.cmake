# Installs the library, its headers and the packages that find_package(tallbook) and pkg-config find.
# Tools and resources install themselves. The same package works from the build tree: -Dtallbook_DIR=<build>.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tallbook)

install(TARGETS tallbook EXPORT tallbookTargets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tallbook DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tallbookTargets NAMESPACE tallbook:: DESTINATION ${package_folder})
export(TARGETS tallbook NAMESPACE tallbook:: FILE ${PROJECT_BINARY_DIR}/tallbookTargets.cmake)

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/tallbook-config.cmake.in ${PROJECT_BINARY_DIR}/tallbook-config.cmake
  INSTALL_DESTINATION ${package_folder}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tallbook-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tallbook-config.cmake
              ${PROJECT_BINARY_DIR}/tallbook-config-version.cmake DESTINATION ${package_folder})

configure_file(${PROJECT_SOURCE_DIR}/cmake/tallbook.pc.in ${PROJECT_BINARY_DIR}/tallbook.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tallbook.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

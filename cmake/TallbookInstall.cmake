# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

# Installs the library, its headers and the packages that find_package(tallbook) and pkg-config find.
# Tools and resources install themselves. The same package works from the build tree: -Dtallbook_DIR=<build>.
# docs/packages.md lists the components of the installation and those of the package.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tallbook)

install(TARGETS tallbook EXPORT tallbookTargets LIBRARY COMPONENT library NAMELINK_COMPONENT dev)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tallbook DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT dev)
install(EXPORT tallbookTargets NAMESPACE tallbook:: DESTINATION ${package_folder} COMPONENT dev)
export(TARGETS tallbook NAMESPACE tallbook:: FILE ${PROJECT_BINARY_DIR}/tallbookTargets.cmake)

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/tallbook-config.cmake.in ${PROJECT_BINARY_DIR}/tallbook-config.cmake
  INSTALL_DESTINATION ${package_folder}
  PATH_VARS CMAKE_INSTALL_BINDIR CMAKE_INSTALL_LIBDIR TALLBOOK_RESOURCE_DIRECTORY
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tallbook-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tallbook-config.cmake
              ${PROJECT_BINARY_DIR}/tallbook-config-version.cmake
        DESTINATION ${package_folder} COMPONENT dev)

configure_file(${PROJECT_SOURCE_DIR}/cmake/tallbook.pc.in ${PROJECT_BINARY_DIR}/tallbook.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tallbook.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev)

# The pages refer to each other and to the examples as they do in the sources.
foreach(page CONTRIBUTING.md NEWS README.md SECURITY.md)
  install(FILES ${PROJECT_SOURCE_DIR}/${page} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
        PATTERN CMakeLists.txt EXCLUDE
        PATTERN Doxyfile.in EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT license)

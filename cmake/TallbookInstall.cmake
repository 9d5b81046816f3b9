# Installs the library, its headers and the package that find_package(tallbook) finds. Tools and
# resources install themselves. The same package works from the build tree: -Dtallbook_DIR=<build>.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tallbook)

install(TARGETS tallbook EXPORT tallbookTargets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tallbook DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tallbookTargets NAMESPACE tallbook:: DESTINATION ${package_folder})
export(TARGETS tallbook NAMESPACE tallbook:: FILE ${PROJECT_BINARY_DIR}/tallbookTargets.cmake)

configure_file(${PROJECT_SOURCE_DIR}/cmake/tallbook-config.cmake
               ${PROJECT_BINARY_DIR}/tallbook-config.cmake COPYONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tallbook-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tallbook-config.cmake
              ${PROJECT_BINARY_DIR}/tallbook-config-version.cmake DESTINATION ${package_folder})

# The tools find the library beside them, wherever the prefix is, and in the build tree as well: with
# a path of its own there, which CMake ends with a colon, they would look in the working folder too.
file(RELATIVE_PATH library_from_tool /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(
  tallbook_tool tallbook_migrate PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_tool}"
                                            BUILD_WITH_INSTALL_RPATH ON)

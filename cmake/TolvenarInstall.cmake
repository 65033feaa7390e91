# cmake --install: the shared library, the public headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS tolvenar EXPORT tolvenar
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tolvenar DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT tolvenar NAMESPACE tolvenar:: FILE tolvenar-targets.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tolvenar
  COMPONENT development)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tolvenar-config.cmake.in ${PROJECT_BINARY_DIR}/tolvenar-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tolvenar)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tolvenar-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tolvenar-config.cmake ${PROJECT_BINARY_DIR}/tolvenar-config-version.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tolvenar COMPONENT development)

# The prefix as seen from the pkg-config file, so that the whole can be installed anywhere and moved.
file(RELATIVE_PATH TOLVENAR_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" TOLVENAR_PREFIX_FROM_PC "${TOLVENAR_PREFIX_FROM_PC}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/tolvenar.pc.in ${PROJECT_BINARY_DIR}/tolvenar.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tolvenar.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# What a Windows host needs beside the DLL: its declarations.
if(WIN32)
  install(FILES ${PROJECT_SOURCE_DIR}/examples/vb/tolvenar.bas DESTINATION vb COMPONENT development)
endif()

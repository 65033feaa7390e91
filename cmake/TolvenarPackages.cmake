# cpack, in a build folder: what a user installs.
#
#   off Windows   cpack -G DEB   libtolvenar1_..._.deb (what a program needs to run), libtolvenar-dev_..._.deb (what it is built with)
#                 cpack -G TGZ   tolvenar-...-linux-....tar.gz: both, to be unpacked anywhere
#   Windows       cpack -G ZIP   tolvenar-...-win32.zip: the DLL, its import library, the headers, the declarations for Visual Basic
set(CPACK_PACKAGE_NAME tolvenar)
set(CPACK_PACKAGE_VENDOR "The Tolvenar developers")
set(CPACK_PACKAGE_CONTACT "The Tolvenar developers <tolvenar@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL library development)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME tolvenar-${PROJECT_VERSION}-win32)
else()
  set(CPACK_GENERATOR "DEB;TGZ")
  string(TOLOWER "${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" system)
  set(CPACK_PACKAGE_FILE_NAME tolvenar-${PROJECT_VERSION}-${system})
endif()
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)

# A pair of Debian packages; everything else is one archive.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/cpack_by_generator.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libtolvenar${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtolvenar-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libtolvenar${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "The shared library, for programs that read, edit and write Excel workbooks.")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "Headers, and what CMake and pkg-config need to build programs with the library.")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "The shared library")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, CMake package and pkg-config file")
include(CPack)

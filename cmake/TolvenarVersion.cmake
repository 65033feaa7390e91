# TOLVENAR_VERSION, as the public header states it.
set(version_header ${CMAKE_CURRENT_LIST_DIR}/../include/tolvenar/tolvenar.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_header})
file(STRINGS ${version_header} version_lines REGEX "^#define TOLVENAR_VERSION_(MAJOR|MINOR|PATCH) [0-9]+$")
string(REGEX MATCHALL "[0-9]+" TOLVENAR_VERSION "${version_lines}")
list(JOIN TOLVENAR_VERSION "." TOLVENAR_VERSION)
if(NOT TOLVENAR_VERSION MATCHES "^[0-9]+\\.[0-9]+\\.[0-9]+$")
  message(FATAL_ERROR "${version_header} states no version: the three lines #define TOLVENAR_VERSION_... are looked for")
endif()

# GoogleTest, and how its programs become ctests.
if(WIN32)
  # Debian has no GoogleTest for Windows, but it has the sources.
  set(TOLVENAR_GTEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest, to be built for the target")
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(${TOLVENAR_GTEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

# docs/windows.md names, in the first column of its table, the test files that are not built for Windows and the tests that are built
# and not run.
if(WIN32)
  set(document ${PROJECT_SOURCE_DIR}/docs/windows.md)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${document})
  file(STRINGS ${document} rows REGEX "^\\| `[^|]+` +\\|")
  list(TRANSFORM rows REPLACE "^\\| (`[^|]+`) +\\|.*" "\\1")
  string(REGEX MATCHALL "[^`, ;]+" left_out "${rows}")
  set(left_out_files ${left_out})
  list(FILTER left_out_files INCLUDE REGEX "\\.cpp$")
  list(FILTER left_out EXCLUDE REGEX "\\.cpp$")
  list(JOIN left_out ":" left_out_filter)
endif()

# Takes the test files that are not for Windows out of the list named LIST.
function(tolvenar_leave_out_tests list)
  if(WIN32)
    foreach(file IN LISTS left_out_files)
      list(REMOVE_ITEM ${list} ${PROJECT_SOURCE_DIR}/${file})
    endforeach()
    set(${list} ${${list}} PARENT_SCOPE)
  endif()
endfunction()

# Registers the tests of a GoogleTest program: each by its name, or, where every start of a program takes a start of Wine, all at once.
function(tolvenar_add_gtest program)
  if(WIN32)
    add_test(NAME ${program} COMMAND ${program} --gtest_brief=1 --gtest_filter=-${left_out_filter})
    set_tests_properties(${program} PROPERTIES TIMEOUT 600 LABELS wine ENVIRONMENT TOLVENAR_CORPUS=${TOLVENAR_CORPUS})
    set_property(GLOBAL APPEND PROPERTY TOLVENAR_GTEST_PROGRAMS ${program})
  else()
    gtest_discover_tests(${program} DISCOVERY_TIMEOUT 60 PROPERTIES ENVIRONMENT TOLVENAR_CORPUS=${TOLVENAR_CORPUS} TIMEOUT 120)
  endif()
endfunction()

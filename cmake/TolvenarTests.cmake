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

# Registers the tests of a GoogleTest program: each by its name, or, where every start of a program takes a start of Wine, all at once.
function(tolvenar_add_gtest program)
  if(WIN32)
    add_test(NAME ${program} COMMAND ${program} --gtest_brief=1)
    set_tests_properties(${program} PROPERTIES TIMEOUT 600 LABELS wine)
  else()
    gtest_discover_tests(${program} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
  endif()
endfunction()

# Compiler options of everything in the project: warnings are errors; the sanitizers and the counts of lines when asked for.
add_library(tolvenar_options INTERFACE)
target_compile_options(tolvenar_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_compile_features(tolvenar_options INTERFACE cxx_std_20)
if(WIN32)
  # The system's headers define min and max as macros unless told not to.
  target_compile_definitions(tolvenar_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

if(TOLVENAR_SANITIZE)
  set(TOLVENAR_SANITIZERS -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(TOLVENAR_FUZZ)
    list(APPEND TOLVENAR_SANITIZERS -fsanitize=fuzzer-no-link)
  endif()
  target_compile_options(tolvenar_options INTERFACE ${TOLVENAR_SANITIZERS})
  target_link_options(tolvenar_options INTERFACE ${TOLVENAR_SANITIZERS})
endif()

if(TOLVENAR_COVERAGE)
  set(TOLVENAR_COVERAGE_OPTIONS -fprofile-instr-generate -fcoverage-mapping)
  target_compile_options(tolvenar_options INTERFACE ${TOLVENAR_COVERAGE_OPTIONS})
  target_link_options(tolvenar_options INTERFACE ${TOLVENAR_COVERAGE_OPTIONS})
endif()

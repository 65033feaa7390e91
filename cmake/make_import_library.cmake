# Script: makes the import library OUTPUT for the exports that DEF lists.
#   NM, DLLTOOL   the binutils of the target
#   OBJECT_LIST   a file with the paths of the library's objects, one per line
# An export FOO that the objects define as _FOO@8 (__stdcall) gets the symbol _FOO@8 and the import name FOO; one that they define as _FOO
# (__cdecl) keeps its name. An export that no object defines is an error.
file(STRINGS ${DEF} exports REGEX "^  [A-Za-z]")
file(STRINGS ${OBJECT_LIST} objects REGEX "/exports/")
execute_process(COMMAND ${NM} --defined-only --extern-only --format=posix ${objects}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)

string(PREPEND symbols "\n")
set(decorated "LIBRARY tolvenar.dll\nEXPORTS\n")
foreach(name IN LISTS exports)
  string(STRIP "${name}" name)
  if(NOT symbols MATCHES "\n_(${name}(@[0-9]+)?) T ")
    message(FATAL_ERROR "${name} is listed in ${DEF}, but no object defines it")
  endif()
  string(APPEND decorated "  ${CMAKE_MATCH_1}\n")
endforeach()

set(decorated_def ${OUTPUT}.def)
file(WRITE ${decorated_def} "${decorated}")
execute_process(COMMAND ${DLLTOOL} --machine i386 --kill-at --input-def ${decorated_def} --output-lib ${OUTPUT}
  COMMAND_ERROR_IS_FATAL ANY)

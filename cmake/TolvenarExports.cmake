# The symbols of the shared library. src/exports/tolvenar.def is the one list of the exports; the Windows linker reads it as it is, and
# elsewhere a version script is made of it and of automation.exports, the names that Windows hosts get from the system.
set(def_file ${PROJECT_SOURCE_DIR}/src/exports/tolvenar.def)
set(automation_file ${PROJECT_SOURCE_DIR}/src/exports/automation.exports)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${def_file} ${automation_file})

if(WIN32)
  target_sources(tolvenar PRIVATE ${def_file})
  target_link_libraries(tolvenar PRIVATE ole32 oleaut32 uuid)
  target_link_options(tolvenar PRIVATE -Wl,--kill-at -Wl,--enable-stdcall-fixup)

  # The linker's own import library knows the plain names only, and a C host refers to a __stdcall function by its decorated one. So it is
  # made again from the names that the objects define: decorated symbols that lead to the plain names of the DLL.
  file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/tolvenar_objects.txt CONTENT "$<JOIN:$<TARGET_OBJECTS:tolvenar_objects>,\n>\n")
  add_custom_command(TARGET tolvenar POST_BUILD
    COMMAND ${CMAKE_COMMAND} -D NM=${CMAKE_NM} -D DLLTOOL=${CMAKE_DLLTOOL} -D DEF=${def_file}
      -D OBJECT_LIST=${PROJECT_BINARY_DIR}/tolvenar_objects.txt -D OUTPUT=$<TARGET_LINKER_FILE:tolvenar>
      -P ${PROJECT_SOURCE_DIR}/cmake/make_import_library.cmake
    VERBATIM)
else()
  file(STRINGS ${def_file} export_names REGEX "^  [A-Za-z]")
  file(STRINGS ${automation_file} automation_names REGEX "^[A-Za-z]")
  set(version_script "{\n  global:\n")
  foreach(name IN LISTS export_names automation_names)
    string(STRIP "${name}" name)
    string(APPEND version_script "    ${name};\n")
  endforeach()
  string(APPEND version_script "  local: *;\n};\n")
  file(WRITE ${PROJECT_BINARY_DIR}/tolvenar.map "${version_script}")
  target_link_options(tolvenar PRIVATE -Wl,--version-script=${PROJECT_BINARY_DIR}/tolvenar.map)
  set_target_properties(tolvenar PROPERTIES LINK_DEPENDS ${PROJECT_BINARY_DIR}/tolvenar.map)
  if(NOT TOLVENAR_SANITIZE)
    target_link_options(tolvenar PRIVATE -Wl,--no-undefined)
  endif()
endif()

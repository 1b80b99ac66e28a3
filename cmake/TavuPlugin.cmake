# tavu_plugin(<name> SOURCES ... LINK ...): a plug-in that the player loads by its path: <name>.so,
# in a build in its folder "modules". It exports worker_create alone, so that plug-ins cannot meet by
# their symbols, and is never unloaded, since the host keeps functions of it.
function(tavu_plugin name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} MODULE ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  if(COMMAND tavu_strict)
    tavu_strict(${name})
  endif()
  set(exports ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/plugin.map)
  target_link_options(${name} PRIVATE LINKER:--version-script=${exports} LINKER:-z,nodelete)
  # clang leaves its sanitizers' run-time library to the program.
  if(NOT (TAVU_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang"))
    target_link_options(${name} PRIVATE LINKER:--no-undefined)
  endif()
  set_target_properties(
    ${name}
    PROPERTIES AUTOMOC ON
               CXX_STANDARD 17
               CXX_STANDARD_REQUIRED ON
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               PREFIX ""
               LINKER_LANGUAGE CXX
               LINK_DEPENDS ${exports}
               LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/modules)
endfunction()

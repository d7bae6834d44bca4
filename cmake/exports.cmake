# Shared objects export their interface and nothing else: not the instances of other libraries'
# templates, which the compiler puts into every object that uses them.  They carry the major version.
#
#   vexel_exports(TARGET HEADER file.h)             the functions that a C header declares
#   vexel_exports(TARGET SYMBOLS pattern ...)       of names as the linker sees them
function(vexel_exports target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "HEADER" "SYMBOLS")
  if(arg_HEADER)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${arg_HEADER})
    file(READ ${arg_HEADER} text)
    string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
    string(REGEX MATCHALL "[A-Za-z0-9_]+[A-Za-z0-9]\\(" functions "${text}")
    list(TRANSFORM functions REPLACE "\\($" "")
    list(APPEND arg_SYMBOLS ${functions})
  endif()
  list(REMOVE_DUPLICATES arg_SYMBOLS)
  list(JOIN arg_SYMBOLS ";\n  " symbols)
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(WRITE ${map}.new "{ global:\n  ${symbols};\nlocal: *; };\n")
  configure_file(${map}.new ${map} COPYONLY)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()

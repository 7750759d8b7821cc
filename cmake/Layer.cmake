# dvu_layer(NAME [LINKS target...] [PRIVATE_LINKS target...])
#
# Compiles the current folder, without a program's main.cpp, as an object library, for the shipped library or program
# and for the tests. Only targets that link the layer see its headers, so that an include from a lower layer does not
# compile.
function(dvu_layer name)
  cmake_parse_arguments(arg "" "" "LINKS;PRIVATE_LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "*.cpp")
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  add_library(${name} OBJECT ${sources})
  target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE dvu_warnings ${arg_PRIVATE_LINKS})
  dvu_precompile(${name})
endfunction()

# dvu_layer(NAME SOURCES file... [LINKS target...])
#
# One folder of the tree as an object library: compiled once, linked into the shipped library or
# program and into the tests. Its headers are seen by what links it and by nothing else, so an
# include against the direction of the layers does not compile.
function(dvu_layer name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} OBJECT ${arg_SOURCES})
  target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE dvu_warnings ${arg_PRIVATE_LINKS})
endfunction()

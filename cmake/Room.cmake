# dvu_room(HOUSE ROOM [LINKS target...] [PRIVATE_LINKS target...])
#
# One room of a house: a folder of the current source directory, as the object library HOUSE_ROOM of its
# sources. Includes carry the room's name ("syntax/Lexer.h"). A room sees itself and the rooms that it links,
# and no other: its public include directory holds nothing but a link to its own folder.
function(dvu_room house room)
  cmake_parse_arguments(arg "" "" "LINKS;PRIVATE_LINKS" ${ARGN})
  set(door "${CMAKE_CURRENT_BINARY_DIR}/doors/${room}")
  file(MAKE_DIRECTORY "${door}")
  file(CREATE_LINK "${CMAKE_CURRENT_SOURCE_DIR}/${room}" "${door}/${room}" SYMBOLIC)
  file(GLOB sources CONFIGURE_DEPENDS "${room}/*.cpp")
  if(NOT sources)  # a room of headers
    add_library(${house}_${room} INTERFACE)
    target_include_directories(${house}_${room} INTERFACE "${door}")
    target_link_libraries(${house}_${room} INTERFACE ${arg_LINKS})
    return()
  endif()
  add_library(${house}_${room} OBJECT ${sources})
  target_include_directories(${house}_${room} PUBLIC "${door}")
  target_link_libraries(${house}_${room} PUBLIC ${arg_LINKS} PRIVATE dvu_warnings ${arg_PRIVATE_LINKS})
  dvu_precompile(${house}_${room})
endfunction()

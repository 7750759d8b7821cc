set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# The same bytes from every checkout.
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>")

# GCC collects its garbage only above 512 MB, which takes a twentieth of its time away. It needs 700 MB at most.
add_compile_options("$<$<CXX_COMPILER_ID:GNU>:SHELL:--param ggc-min-heapsize=524288>")

set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

set(DVU_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize= (empty: none)")
if(DVU_SANITIZE)
  add_compile_options(-fsanitize=${DVU_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${DVU_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized)  # GCC reports false ones in instrumented code
  endif()
else()
  # A buffer overrun ends the program. _FORTIFY_SOURCE needs optimisation.
  add_compile_options(-fstack-protector-strong -fstack-clash-protection
    "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()
# With debug information, GNU ld takes half the time of an incremental build.
find_program(DVU_GOLD ld.gold)
if(DVU_GOLD AND CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT DVU_SANITIZE)
  add_link_options(-fuse-ld=gold)
endif()
add_link_options(LINKER:-z,relro,-z,now)  # makes the tables of function addresses read-only after loading

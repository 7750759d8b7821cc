option(DVU_WERROR "Treat compiler warnings as errors" OFF)

add_library(dvu_warnings INTERFACE)
target_compile_options(dvu_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2
  $<$<BOOL:${DVU_WERROR}>:-Werror>)
# GCC 12 reports false ones in inlined std::string operations: they stay warnings.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(dvu_warnings INTERFACE -Wno-error=array-bounds -Wno-error=restrict)
endif()

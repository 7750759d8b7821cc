option(DVU_WERROR "Treat compiler warnings as errors" OFF)

add_library(dvu_warnings INTERFACE)
target_compile_options(dvu_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2
  $<$<BOOL:${DVU_WERROR}>:-Werror>)

# Exceptions for single sources, and options for those whose own code takes no time. The presets run and release
# join the sources of a target to one translation unit (CMAKE_UNITY_BUILD), which halves the compiler's time; the
# other presets compile each source alone.

# dvu_compiled_alone(file...): these sources are never joined with others.
function(dvu_compiled_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# -Og compiles in two thirds of the time of -O2; GCC 12 then reports uninitialized variables where there are none.
set(DVU_QUICK_OPTIONS
  "$<$<NOT:$<CONFIG:Debug>>:-Og;$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>>")

# dvu_compiled_quickly(target...): compiled at -Og, for code that runs once or waits for others.
function(dvu_compiled_quickly)
  foreach(target IN LISTS ARGN)
    target_compile_options(${target} PRIVATE "${DVU_QUICK_OPTIONS}")
  endforeach()
endfunction()

# dvu_alone_quickly(file...): compiled alone at -Og, for sources that run once and whose headers take long.
function(dvu_alone_quickly)
  dvu_compiled_alone(${ARGN})
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "${DVU_QUICK_OPTIONS}")
endfunction()

# Exceptions for single sources, and options for those whose own code takes no time. The presets run and release
# join the sources of a target to one translation unit (CMAKE_UNITY_BUILD), which halves the compiler's time; the
# other presets compile each source alone.

# dvu_compiled_alone(file...): these sources are never joined with others.
function(dvu_compiled_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# -O1 compiles in three quarters of the time; GCC 12 then reports uninitialized variables where there are none.
set(DVU_QUICK_OPTIONS
  "$<$<NOT:$<CONFIG:Debug>>:-O1;$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>>")

# dvu_compiled_quickly(file...): compiled alone at -O1, for sources that run once and whose headers take long.
function(dvu_compiled_quickly)
  dvu_compiled_alone(${ARGN})
  set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS "${DVU_QUICK_OPTIONS}")
endfunction()

# dvu_precompile(target...): the standard library's headers are parsed once for all these targets, which must be
# compiled with the same flags as an object library of the top folder. Sources still include what they use; the
# presets tidy and fuzz build without.
set(DVU_STANDARD_HEADERS
  <algorithm> <array> <charconv> <chrono> <cstdint> <cstdio> <cstdlib> <cstring> <ctime> <filesystem> <fstream>
  <functional> <map> <memory> <mutex> <optional> <set> <span> <sstream> <stdexcept> <string> <string_view>
  <system_error> <thread> <utility> <variant> <vector>)

# Owns the compiled headers NAME; the other arguments are added to the standard ones.
function(dvu_precompiled_headers name)
  file(CONFIGURE OUTPUT ${name}.cpp CONTENT "" @ONLY)
  add_library(${name} OBJECT "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  target_precompile_headers(${name} PRIVATE ${DVU_STANDARD_HEADERS} ${ARGN})
  target_link_libraries(${name} PRIVATE dvu_warnings)  # -Wpedantic changes macros
endfunction()

dvu_precompiled_headers(dvu_standard_headers)

function(dvu_precompile)
  foreach(target IN LISTS ARGN)
    target_precompile_headers(${target} REUSE_FROM dvu_standard_headers)
  endforeach()
endfunction()

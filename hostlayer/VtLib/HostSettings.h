// Settings of the host layer: the values of the store's [host] table. Exported by libVtLib.so.
#pragma once

#include <string>

#include "PlatformExport.h"

namespace hostlayer {

// Returns a setting, a number as decimal digits; `fallback` when the store does not set it.
VT_PLATFORM_EXPORT std::string hostSetting(const char* name, const char* fallback);

}  // namespace hostlayer

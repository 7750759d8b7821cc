// Settings of the host layer itself, as the store's [host] table gives them.
#pragma once

#include <string>

#include "PlatformExport.h"

namespace hostlayer {

// The setting's text (a number in decimal digits); the fallback when the store has none.
VT_PLATFORM_EXPORT std::string hostSetting(const char* name, const char* fallback);

}  // namespace hostlayer

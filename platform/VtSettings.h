// Settings of the platform layer that the library reads, too. This header is optional: libDVUtilities also
// runs with platform libraries that do not define the function, and then takes every setting's default.
#pragma once

#include <string>

#include "PlatformExport.h"

// Reads a setting, a number as decimal digits, into `value`. False, with `value` unchanged, if the setting is
// missing or empty.
VT_PLATFORM_EXPORT __attribute__((weak)) bool VtSetting(const char* name, std::string* value);

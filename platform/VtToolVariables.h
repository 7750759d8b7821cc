// Variables of the query tool's scripts. This header is optional, as VtCauses.h is.
#pragma once

#include "PlatformExport.h"

// Sets whether the strict query tool, when the calling thread starts it, expands the variables that a script
// sets. Returns the value before; it is false at first.
VT_PLATFORM_EXPORT __attribute__((weak)) bool VtExpandToolVariables(bool expand) noexcept;

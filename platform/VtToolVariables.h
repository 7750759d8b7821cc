// Variables of the query tool's scripts. This header is optional, as VtCauses.h is.
#pragma once

#include "PlatformExport.h"

// Sets whether the strict query tool expands variables, $(NAME), in its script when the calling thread starts
// it. Returns the value before, which is false at first.
VT_PLATFORM_EXPORT __attribute__((weak)) bool VtExpandToolVariables(bool expand) noexcept;

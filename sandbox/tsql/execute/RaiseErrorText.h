// Formatting of RAISERROR messages: %s, %d, %i, %u, %x, %X, %o and %% with flags, width and precision.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "types/Values.h"

namespace tsql {

// Replaces the conversions in `format` by the arguments. Missing arguments become "(null)". Throws SqlError
// 2787 for an invalid conversion and 2786 for an argument of the wrong type.
std::string raiseErrorText(std::string_view format, std::span<const TypedValue> arguments);

}  // namespace tsql

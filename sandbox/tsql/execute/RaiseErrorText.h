// The text of RAISERROR: %s, %d, %i, %u, %x, %X, %o and %% with flags, width and precision.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "types/Values.h"

namespace tsql {

// Missing arguments are "(null)". Throws SqlError 2787 for a conversion that is none, 2786 for an argument of
// another type than its conversion asks for.
std::string raiseErrorText(std::string_view format, std::span<const TypedValue> arguments);

}  // namespace tsql

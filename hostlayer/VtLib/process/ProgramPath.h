// Path of the program that a process start runs.
#pragma once

#include <string>
#include <string_view>

#include "store/Store.h"

namespace hostlayer {

// Returns the path that [host.programs] gives for the program, else the name itself without double quotes.
// For the query tool's default path without an entry, it is the first of that path, the folder of Microsoft's
// current packages, and `sqlcmd` on PATH. The debug log gets a path that differs from the name.
std::string programPath(std::string_view name, const StoreState& store);

// Returns the name of a program's entry in [host.programs]: what follows the last slash, without double
// quotes.
std::string entryNameOf(std::string_view program);

}  // namespace hostlayer

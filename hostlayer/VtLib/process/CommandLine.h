// Splitting of a command line into a program's arguments.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hostlayer {

// Appends the line's arguments, which are separated by spaces and tabs. Text between double quotes is taken
// literally, line breaks and backslashes included; the quotes are removed, and "" is an empty argument. False
// when a quote is not closed.
bool splitCommandLine(std::string_view line, std::vector<std::string>& arguments);

}  // namespace hostlayer

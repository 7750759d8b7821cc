// Check of placeholder values for what the query tool would not read as part of a value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Returns what is wrong with the first value that may not be filled in: it has a line break, completes a
// "$(" or completes a line that the query tool takes as a command (GO, EXIT, ":r", "!!" and the like). Empty
// if there is none. Values without a placeholder are not checked.
std::string valueProblem(std::string_view body, const std::vector<std::string>& values);

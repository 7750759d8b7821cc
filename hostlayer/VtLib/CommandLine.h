// A command line's words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hostlayer {

// Splits at blanks and tabs outside double quotes. Between double quotes every character stands for itself,
// line breaks and backslashes included; the quotes themselves are dropped, and "" is an empty word. False
// when a quote is not closed.
bool splitCommandLine(std::string_view line, std::vector<std::string>& words);

}  // namespace hostlayer

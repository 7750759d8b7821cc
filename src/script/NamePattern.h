// Name patterns of callers as conditions in SQL.
#pragma once

#include <string>
#include <string_view>

inline constexpr std::size_t kLongestNamePattern = 256;  // bytes

// "name LIKE ..." for a pattern in which "*" stands for any characters and "?" for one. What LIKE itself
// treats specially stands for itself, and no quote ends the literal.
std::string nameCondition(std::string_view pattern);

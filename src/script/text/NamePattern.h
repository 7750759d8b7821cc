// Name patterns as SQL conditions.
#pragma once

#include <string>
#include <string_view>

inline constexpr std::size_t kLongestNamePattern = 256;  // bytes

// Returns "name LIKE ..." for a pattern in which "*" matches any characters and "?" matches one. LIKE's own
// wildcards and quotes are escaped.
std::string nameCondition(std::string_view pattern);

// Comparison of names without regard to case.
#pragma once

#include <algorithm>
#include <string_view>

// Whether the strings are equal but for the case of ASCII letters. Unlike strcasecmp(), does not depend on
// the host program's locale: in a Turkish one, "i" and "I" are different letters.
inline bool equalIgnoringCase(std::string_view one, std::string_view other) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [&](char a, char b) { return lower(a) == lower(b); });
}

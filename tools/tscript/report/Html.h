// HTML text: escaping, templates, numbers.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// Escapes text for an element or for an attribute value in double quotes. Control characters and bytes that
// are not UTF-8 become blanks.
std::string escaped(std::string_view text);
// Replaces each "{}" with the next value, without escaping.
std::string fillTemplate(std::string_view pattern, std::initializer_list<std::string> values);

std::string numberText(std::int64_t number);                   // "1,234,567"
std::string countText(std::int64_t number, const char* noun);  // "1 run", "1,234 runs"
std::string percentText(double fraction);                      // 0.125 gives "12.5%"

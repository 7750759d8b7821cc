// UTF-8 strings and their width on a terminal. Depends on LC_CTYPE, which main() sets.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

bool isUtf8(std::string_view text);
// Whether a character changes the direction of the text behind it (U+202A to U+202E, U+2066 to U+2069).
bool hasDirectionControl(std::string_view text);
// Replaces with blanks: control characters not in `kept`, those that change the direction of text, and bytes
// that are not UTF-8.
std::string withoutControls(std::string_view text, std::string_view kept = {});
std::size_t displayWidth(std::string_view text);  // in columns
// Truncates text wider than `width` columns (at least 1) and ends it with "…".
std::string truncated(const std::string& text, std::size_t width);

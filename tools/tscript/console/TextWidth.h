// UTF-8 texts, and how they stand on a terminal. The process's LC_CTYPE tells; main() sets it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

bool isUtf8(std::string_view text);
// Control characters but for those kept, and bytes that are no UTF-8, become blanks.
std::string cleaned(std::string_view text, std::string_view kept = {});
std::size_t widthOf(std::string_view text);  // in columns
// The text, cut and ended by "…" where it is wider. `width` is at least 1.
std::string fitted(const std::string& text, std::size_t width);

// Row texts: a result row as one string, its columns joined by a separator.
#pragma once

#include <string>
#include <string_view>
#include <vector>

inline constexpr std::size_t kFieldLength = 128;             // characters of a parsed field, without its NUL
inline constexpr std::size_t kFieldSize = kFieldLength + 1;  // of a field's buffer

// Splits a row text into exactly `count` fields. Of the row, 129 characters a field are looked at. Runs of
// separators count as one, so that an empty field vanishes and the following ones move forward; what is not
// filled is empty. Each field is interpreted as a format string and cut to 128 characters.
std::vector<std::string> splitRow(std::string_view row, char separator, int count);
// The same; here the row as a whole is interpreted as a format string before its fields are.
std::vector<std::wstring> splitRow(std::wstring_view row, wchar_t separator, int count);

// The number that a text begins with, blanks before it skipped; 0 when there is none.
int leadingNumber(const std::string& text);

// UTF-8 text as wide characters; U+FFFD stands for every byte that is not UTF-8.
std::wstring wideText(std::string_view utf8);

// Row texts: result rows as strings, with the columns joined by a separator.
#pragma once

#include <string>
#include <string_view>
#include <vector>

inline constexpr std::size_t kFieldLength = 128;             // characters of a parsed field, without the NUL
inline constexpr std::size_t kFieldSize = kFieldLength + 1;  // of a field's buffer, with the NUL

// Splits a row text into exactly `count` fields. Reads at most 129 characters per field of the row. Several
// separators in a row count as one, so that empty fields are skipped and later ones move forward; missing
// fields are empty. Each field is interpreted as a format string and cut to 128 characters. Callers rely on
// all of it.
std::vector<std::string> splitRow(std::string_view row, char separator, int count);
// The same, but the whole row is interpreted as a format string first, and each field a second time.
std::vector<std::wstring> splitRow(std::wstring_view row, wchar_t separator, int count);

// Returns the number at the beginning of a string, after blanks; 0 without one.
int leadingNumber(const std::string& text);

// Converts UTF-8 to wide characters. Each invalid byte becomes U+FFFD.
std::wstring wideText(std::string_view utf8);

// Conversion between UTF-8 (internal) and UTF-16LE (on the wire).
#pragma once

#include <string>
#include <string_view>

namespace tsql {

// Never fails: invalid UTF-8 and unpaired surrogates become U+FFFD.
void appendUtf16(std::string& wire, std::string_view utf8);
std::string utf16FromUtf8(std::string_view utf8);
// A trailing odd byte is ignored.
std::string utf8FromUtf16(std::string_view wire);
// Windows code page 1252, the encoding of char and varchar parameters.
std::string utf8FromCodePage1252(std::string_view wire);
unsigned char codePage1252(char32_t character);  // '?' if the code page lacks it

}  // namespace tsql

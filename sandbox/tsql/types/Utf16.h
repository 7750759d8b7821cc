// Text between UTF-8 (inside) and UTF-16LE (on the wire).
#pragma once

#include <string>
#include <string_view>

namespace tsql {

// What is no valid UTF-8 or an unpaired surrogate becomes U+FFFD; nothing is refused.
void appendUtf16(std::string& wire, std::string_view utf8);
std::string utf16FromUtf8(std::string_view utf8);
// A trailing odd byte is ignored.
std::string utf8FromUtf16(std::string_view wire);
// Windows code page 1252, in which clients send char and varchar parameters.
std::string utf8FromCodePage1252(std::string_view wire);
unsigned char codePage1252(char32_t character);  // a question mark where it has none

}  // namespace tsql

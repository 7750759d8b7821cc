// Conversion between UTF-8 (internal) and the encodings of the wire: UTF-16LE and code page 1252.
#pragma once

#include <string>
#include <string_view>

namespace tsql {

// Never fails: invalid UTF-8 and unpaired surrogates become U+FFFD.
void appendUtf16(std::string& wire, std::string_view utf8);
std::string utf16FromUtf8(std::string_view utf8);
// A trailing odd byte is ignored.
std::string utf8FromUtf16(std::string_view wire);
// Windows code page 1252, the encoding of char, varchar and text. It replaces letters that it lacks by their
// base letter, and other characters by '?'.
std::string utf8FromCodePage1252(std::string_view wire);
void appendCodePage1252(std::string& wire, std::string_view utf8);
unsigned char codePage1252(char32_t character);

}  // namespace tsql

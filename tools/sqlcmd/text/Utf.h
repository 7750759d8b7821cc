// UTF-8 and UTF-16 helpers for scripts, results and the output of -u.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sqlcmd {

constexpr char32_t kReplacementCharacter = 0xFFFD;  // for bytes that are not UTF-8

constexpr bool isUtf8Continuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Number of characters. An invalid byte counts as one character or none.
std::size_t utf8Length(std::string_view text);

// Returns the longest prefix of at most that many characters.
std::string_view utf8Prefix(std::string_view text, std::size_t characters);

// Number of bytes at the end that begin an incomplete character.
std::size_t utf8IncompleteTail(std::string_view text);

// Offset of the first bytes that are not UTF-8 (RFC 3629); npos if there are none.
std::size_t firstInvalidUtf8(std::string_view text);

void appendUtf8(std::string& out, char32_t character);

// Appends the string as UTF-16, little-endian. Invalid bytes become U+FFFD.
void appendUtf16Le(std::string& out, std::string_view utf8);

}  // namespace sqlcmd

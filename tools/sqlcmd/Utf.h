// UTF-8 and UTF-16, as scripts, results and the -u output need them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sqlcmd {

constexpr bool isUtf8Continuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// In characters; bytes that are not UTF-8 count one or nothing, never an error.
std::size_t utf8Length(std::string_view text);
// The longest beginning of at most that many characters.
std::string_view utf8Prefix(std::string_view text, std::size_t characters);
// The bytes at the end that begin a character whose rest is not there yet.
std::size_t utf8IncompleteTail(std::string_view text);

// Where the first bytes that are no character stand; npos in UTF-8.
std::size_t utf8Fault(std::string_view text);

void appendUtf8(std::string& out, char32_t character);
// Appends UTF-16, little-endian. What is not UTF-8 becomes U+FFFD.
void appendUtf16Le(std::string& out, std::string_view utf8);

}  // namespace sqlcmd

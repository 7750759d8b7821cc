// Base64 (RFC 4648, section 4, without padding), several times faster than the cipher library's own,
// whose time would otherwise be that of a record. Works on enciphered bytes alone: its tables tell
// nothing about a secret.
#pragma once

#include <cstddef>
#include <string_view>

namespace hostlayer {

constexpr std::size_t base64Length(std::size_t byteCount) {
    return (byteCount * 4 + 2) / 3;
}
constexpr std::size_t base64ByteCount(std::size_t length) {
    return length * 3 / 4;
}

// Writes base64Length(byteCount) characters, no NUL.
void encodeBase64(const unsigned char* bytes, std::size_t byteCount, char* text);

// Writes base64ByteCount(text.size()) bytes. False when the text is not what encodeBase64 writes.
bool decodeBase64(std::string_view text, unsigned char* bytes);

}  // namespace hostlayer

// Base64 (RFC 4648, section 4) without padding. libsodium's own runs in constant time and would take most of
// the time that a record costs. The lookup tables here do not: use them for encrypted bytes only, never for a
// key or plain text.
#pragma once

#include <cstddef>
#include <string_view>

namespace hostlayer {

// Number of characters that encode `byteCount` bytes.
constexpr std::size_t base64Length(std::size_t byteCount) {
    return (byteCount * 4 + 2) / 3;
}

// Number of bytes that `length` characters encode.
constexpr std::size_t base64ByteCount(std::size_t length) {
    return length * 3 / 4;
}

// Writes base64Length(byteCount) characters and no NUL.
void encodeBase64(const unsigned char* bytes, std::size_t byteCount, char* text);

// Writes base64ByteCount(text.size()) bytes. False when the text is not exactly what encodeBase64() writes
// for them; `bytes` then holds garbage.
bool decodeBase64(std::string_view text, unsigned char* bytes);

}  // namespace hostlayer

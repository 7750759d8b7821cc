#include "cipher/Base64.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace hostlayer {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct CharacterPair {
    char text[2];
};

// Encoding table: the two characters of every 12-bit number.
constexpr std::array<CharacterPair, 4096> makePairs() {
    std::array<CharacterPair, 4096> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {{kAlphabet[i >> 6], kAlphabet[i & 63]}};
    return pairs;
}

// Flags a byte outside the alphabet. Four characters hold 24 bits, so that it never is one of theirs.
constexpr std::uint32_t kNotInAlphabet = 0x80000000U;

// Decoding table: the six bits of every character, shifted to their place in a group of four characters.
constexpr std::array<std::uint32_t, 256> makeBits(unsigned int shift) {
    std::array<std::uint32_t, 256> bits{};
    for (auto& entry : bits) entry = kNotInAlphabet;
    for (std::uint32_t i = 0; i < 64; ++i) bits[static_cast<unsigned char>(kAlphabet[i])] = i << shift;
    return bits;
}

constexpr auto kPairs = makePairs();
constexpr auto kFirst = makeBits(18);
constexpr auto kSecond = makeBits(12);
constexpr auto kThird = makeBits(6);
constexpr auto kFourth = makeBits(0);

// Encodes the last one or two bytes as two or three characters.
void encodeRest(const unsigned char* bytes, std::size_t byteCount, char* text) {
    const std::uint32_t group =
        (std::uint32_t{bytes[0]} << 16) | (byteCount > 1 ? std::uint32_t{bytes[1]} << 8 : 0U);
    std::memcpy(text, kPairs[group >> 12].text, 2);
    if (byteCount > 1) text[2] = kAlphabet[(group >> 6) & 63];
}

// Decodes the last two or three characters. The bits after the last byte must be zero: each byte sequence has
// exactly one encoding.
bool decodeRest(const unsigned char* text, std::size_t length, unsigned char* bytes) {
    const std::uint32_t group = kFirst[text[0]] | kSecond[text[1]] | (length > 2 ? kThird[text[2]] : 0U);
    bytes[0] = static_cast<unsigned char>(group >> 16);
    if (length > 2) bytes[1] = static_cast<unsigned char>(group >> 8);
    const std::uint32_t unusedBits = length > 2 ? 0xFFU : 0xFFFFU;
    return (group & (kNotInAlphabet | unusedBits)) == 0;
}

}  // namespace

void encodeBase64(const unsigned char* bytes, std::size_t byteCount, char* text) {
    for (; byteCount >= 3; byteCount -= 3, bytes += 3, text += 4) {
        const std::uint32_t group =
            (std::uint32_t{bytes[0]} << 16) | (std::uint32_t{bytes[1]} << 8) | std::uint32_t{bytes[2]};
        std::memcpy(text, kPairs[group >> 12].text, 2);
        std::memcpy(text + 2, kPairs[group & 0xFFF].text, 2);
    }
    if (byteCount > 0) encodeRest(bytes, byteCount, text);
}

bool decodeBase64(std::string_view text, unsigned char* bytes) {
    const auto* from = reinterpret_cast<const unsigned char*>(text.data());
    std::size_t length = text.size();
    std::uint32_t seen = 0;
    for (; length >= 4; length -= 4, from += 4, bytes += 3) {
        const std::uint32_t group = kFirst[from[0]] | kSecond[from[1]] | kThird[from[2]] | kFourth[from[3]];
        seen |= group;
        bytes[0] = static_cast<unsigned char>(group >> 16);
        bytes[1] = static_cast<unsigned char>(group >> 8);
        bytes[2] = static_cast<unsigned char>(group);
    }
    if ((seen & kNotInAlphabet) != 0 || length == 1) return false;
    return length == 0 || decodeRest(from, length, bytes);
}

}  // namespace hostlayer

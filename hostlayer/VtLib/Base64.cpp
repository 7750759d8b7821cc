#include "Base64.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace hostlayer {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Pair {
    char text[2];
};

// Twelve bits at a time make two characters.
constexpr std::array<Pair, 4096> makePairs() {
    std::array<Pair, 4096> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i) pairs[i] = {{kAlphabet[i >> 6], kAlphabet[i & 63]}};
    return pairs;
}

constexpr std::uint32_t kNoCharacter = 0x80000000U;

// A character's six bits at their place in the group of four.
constexpr std::array<std::uint32_t, 256> makeBits(unsigned int shift) {
    std::array<std::uint32_t, 256> bits{};
    for (auto& entry : bits) entry = kNoCharacter;
    for (std::uint32_t i = 0; i < 64; ++i) bits[static_cast<unsigned char>(kAlphabet[i])] = i << shift;
    return bits;
}

constexpr auto kPairs = makePairs();
constexpr auto kFirst = makeBits(18);
constexpr auto kSecond = makeBits(12);
constexpr auto kThird = makeBits(6);
constexpr auto kFourth = makeBits(0);

// The last one or two bytes, as two or three characters.
void encodeRest(const unsigned char* bytes, std::size_t byteCount, char* text) {
    const std::uint32_t group =
        (std::uint32_t{bytes[0]} << 16) | (byteCount > 1 ? std::uint32_t{bytes[1]} << 8 : 0U);
    std::memcpy(text, kPairs[group >> 12].text, 2);
    if (byteCount > 1) text[2] = kAlphabet[(group >> 6) & 63];
}

// The last two or three characters. Bits beyond the last byte must be zero, so that a record has one text
// only.
bool decodeRest(const unsigned char* text, std::size_t length, unsigned char* bytes) {
    const std::uint32_t group = kFirst[text[0]] | kSecond[text[1]] | (length > 2 ? kThird[text[2]] : 0U);
    bytes[0] = static_cast<unsigned char>(group >> 16);
    if (length > 2) bytes[1] = static_cast<unsigned char>(group >> 8);
    return (group & (kNoCharacter | (length > 2 ? 0xFFU : 0xFFFFU))) == 0;
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
    if ((seen & kNoCharacter) != 0 || length == 1) return false;
    return length == 0 || decodeRest(from, length, bytes);
}

}  // namespace hostlayer

#include "text/Utf.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace sqlcmd {
namespace {

// Number of bytes of the character that begins with this byte; 0 if no character does.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

// Removes one character, or invalid bytes, from the front of a string that is not empty and returns it.
char32_t takeCharacter(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = sequenceLength(lead);
    if (length <= 1 || length > text.size()) {
        text.remove_prefix(1);
        return length == 1 ? lead : kReplacementCharacter;
    }
    char32_t character = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (!isUtf8Continuation(text[i])) {
            text.remove_prefix(i);
            return kReplacementCharacter;
        }
        character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    text.remove_prefix(length);
    return character <= 0x10FFFF ? character : kReplacementCharacter;
}

void appendUnit(std::string& out, char32_t unit) {
    out += static_cast<char>(unit & 0xFF);
    out += static_cast<char>(unit >> 8 & 0xFF);
}

}  // namespace

std::size_t utf8Length(std::string_view text) {
    constexpr std::uint64_t kLowBits = 0x0101010101010101;
    constexpr std::size_t kWord = sizeof kLowBits;  // bytes that are counted at once
    constexpr int kTopByte = 56;
    const auto continuations = [](std::uint64_t word) {  // number of bytes 10xxxxxx
        const std::uint64_t bits = (word >> 7) & (~word >> 6) & kLowBits;
        return static_cast<std::size_t>(bits * kLowBits >> kTopByte);  // their sum
    };
    std::size_t length = text.size();
    std::uint64_t word = 0;
    for (; text.size() >= kWord; text.remove_prefix(kWord)) {
        std::memcpy(&word, text.data(), kWord);
        length -= continuations(word);
    }
    word = 0;
    for (const char byte : text) word = word << 8 | static_cast<unsigned char>(byte);
    return length - continuations(word);
}

std::string_view utf8Prefix(std::string_view text, std::size_t characters) {
    if (text.size() <= characters) return text;
    std::size_t end = 0;
    for (; end < text.size(); ++end)
        if (!isUtf8Continuation(text[end]) && characters-- == 0) break;
    return text.substr(0, end);
}

std::size_t utf8IncompleteTail(std::string_view text) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, text.size()); ++back) {
        const char byte = text[text.size() - back];
        if (isUtf8Continuation(byte)) continue;
        return sequenceLength(static_cast<unsigned char>(byte)) > back ? back : 0;
    }
    return 0;
}

std::size_t firstInvalidUtf8(std::string_view text) {
    for (std::string_view rest = text; !rest.empty();) {
        if (static_cast<unsigned char>(rest.front()) < 0x80) {
            rest.remove_prefix(1);
            continue;
        }
        const std::size_t start = text.size() - rest.size();
        const char32_t character = takeCharacter(rest);
        std::string shortest;
        appendUtf8(shortest, character);
        const bool isSurrogate = character >= 0xD800 && character < 0xE000;
        if (isSurrogate || text.substr(start, text.size() - rest.size() - start) != shortest) return start;
    }
    return std::string_view::npos;
}

void appendUtf8(std::string& out, char32_t character) {
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        out += static_cast<char>(character);
    } else if (character < 0x800) {
        out += static_cast<char>(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        out += static_cast<char>(0xE0 | character >> 12);
        tail(6), tail(0);
    } else {
        out += static_cast<char>(0xF0 | character >> 18);
        tail(12), tail(6), tail(0);
    }
}

void appendUtf16Le(std::string& out, std::string_view utf8) {
    while (!utf8.empty()) {
        const char32_t character = takeCharacter(utf8);
        if (character < 0x10000) {
            appendUnit(out, character);
        } else {
            appendUnit(out, 0xD800 + ((character - 0x10000) >> 10));
            appendUnit(out, 0xDC00 + ((character - 0x10000) & 0x3FF));
        }
    }
}

}  // namespace sqlcmd

#include "Utf16.h"

#include <array>
#include <cstdint>

namespace tds {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUnit(std::string& wire, char32_t unit) {
    wire += static_cast<char>(unit & 0xFF);
    wire += static_cast<char>(unit >> 8 & 0xFF);
}

void appendCodePointAsUtf16(std::string& wire, char32_t codePoint) {
    if (codePoint < 0x10000) return appendUnit(wire, codePoint);
    appendUnit(wire, 0xD800 + ((codePoint - 0x10000) >> 10));
    appendUnit(wire, 0xDC00 + ((codePoint - 0x10000) & 0x3FF));
}

void appendCodePointAsUtf8(std::string& text, char32_t codePoint) {
    const auto continuation = [codePoint](int shift) {
        return static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
    };
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += {static_cast<char>(0xC0 | codePoint >> 6), continuation(0)};
    } else if (codePoint < 0x10000) {
        text += {static_cast<char>(0xE0 | codePoint >> 12), continuation(6), continuation(0)};
    } else {
        text +=
            {static_cast<char>(0xF0 | codePoint >> 18), continuation(12), continuation(6), continuation(0)};
    }
}

struct Decoded {
    char32_t codePoint;
    std::size_t length;  // bytes taken
};

// One code point of a sequence that starts with a byte of 0x80 or more.
Decoded decodeUtf8(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {kReplacement, 1};
    char32_t codePoint = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80) return {kReplacement, 1};
        codePoint = codePoint << 6 | (byte & 0x3F);
    }
    const bool surrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    if (codePoint < kSmallest[length] || codePoint > 0x10FFFF || surrogate) return {kReplacement, 1};
    return {codePoint, length};
}

// The upper half of the control range; undefined places keep their number.
constexpr std::array<char16_t, 32> kCodePage1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

void appendUtf16(std::string& wire, std::string_view utf8) {
    for (std::size_t i = 0; i < utf8.size();) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x80) {
            appendUnit(wire, byte);
            ++i;
            continue;
        }
        const Decoded decoded = decodeUtf8(utf8.substr(i));
        appendCodePointAsUtf16(wire, decoded.codePoint);
        i += decoded.length;
    }
}

std::string utf16FromUtf8(std::string_view utf8) {
    std::string wire;
    wire.reserve(2 * utf8.size());
    appendUtf16(wire, utf8);
    return wire;
}

std::string utf8FromUtf16(std::string_view wire) {
    const auto unitAt = [wire](std::size_t i) {
        return static_cast<char32_t>(static_cast<unsigned char>(wire[i]) |
                                     static_cast<unsigned char>(wire[i + 1]) << 8);
    };
    std::string text;
    text.reserve(wire.size() / 2);
    for (std::size_t i = 0; i + 1 < wire.size(); i += 2) {
        char32_t codePoint = unitAt(i);
        if (codePoint >= 0xD800 && codePoint < 0xE000) {
            const char32_t low = codePoint < 0xDC00 && i + 3 < wire.size() ? unitAt(i + 2) : 0;
            const bool paired = low >= 0xDC00 && low < 0xE000;
            codePoint = paired ? 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00) : kReplacement;
            if (paired) i += 2;
        }
        appendCodePointAsUtf8(text, codePoint);
    }
    return text;
}

std::string utf8FromCodePage1252(std::string_view wire) {
    std::string text;
    for (const char c : wire) {
        const auto byte = static_cast<unsigned char>(c);
        appendCodePointAsUtf8(text, byte >= 0x80 && byte < 0xA0 ? kCodePage1252[byte - 0x80U] : byte);
    }
    return text;
}

}  // namespace tds

// Conversions between UTF-8 and the encodings of the wire, declared in Text.h.
#include <bit>
#include <boost/locale/utf.hpp>

#include "types/Text.h"

namespace tsql {
namespace {

namespace utf = boost::locale::utf;
using Utf16 = utf::utf_traits<char16_t>;
static_assert(std::endian::native == std::endian::little);  // as on the wire

// Characters of bytes 0x80 to 0x9F. Undefined bytes map to the code point of the same number.
constexpr char16_t kCodePage1252[] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Moves the ASCII characters at the front, which are most of all results, to the end of `wire`, where each
// has `width` bytes.
void moveAscii(std::string& wire, std::string_view& utf8, std::size_t width) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    const auto count = static_cast<std::size_t>(std::ranges::find_if_not(utf8, isAscii) - utf8.begin());
    const std::size_t start = wire.size();
    wire.resize(start + width * count);
    for (std::size_t i = 0; i < count; ++i) wire[start + width * i] = utf8[i];
    utf8.remove_prefix(count);
}

}  // namespace

void appendUtf16(std::string& wire, std::string_view utf8) {
    for (moveAscii(wire, utf8, 2); !utf8.empty(); moveAscii(wire, utf8, 2)) {
        char16_t units[Utf16::max_width];
        const char16_t* const end = Utf16::encode(nextCharacter(utf8), units);
        wire.append(reinterpret_cast<const char*>(units), reinterpret_cast<const char*>(end));
    }
}

std::string utf16FromUtf8(std::string_view utf8) {
    std::string wire;
    wire.reserve(2 * utf8.size());
    appendUtf16(wire, utf8);
    return wire;
}

std::string utf8FromUtf16(std::string_view wire) {
    std::u16string units(wire.size() / 2, u'\0');
    wire.copy(reinterpret_cast<char*>(units.data()), 2 * units.size());
    std::string text;
    text.reserve(units.size());
    for (auto at = units.cbegin(); at != units.cend();) {
        auto end = at;
        const char32_t c = Utf16::decode(end, units.cend());
        const bool isValid = utf::is_valid_codepoint(c);
        appendCharacter(text, isValid ? c : kReplacement);
        at = isValid ? end : at + 1;
    }
    return text;
}

std::string utf8FromCodePage1252(std::string_view wire) {
    std::string text;
    for (const char c : wire) {
        const auto byte = static_cast<unsigned char>(c);
        appendCharacter(text, byte >= 0x80 && byte < 0xA0 ? kCodePage1252[byte - 0x80] : byte);
    }
    return text;
}

unsigned char codePage1252(char32_t c) {
    constexpr unsigned char kUnknown = '?';
    const auto* found = std::ranges::find(kCodePage1252, c);
    if (found != std::end(kCodePage1252)) return static_cast<unsigned char>(0x80 + (found - kCodePage1252));
    if (c >= 0x100) c = baseLetter(c);
    return c < 0x80 || (c >= 0xA0 && c < 0x100) ? static_cast<unsigned char>(c) : kUnknown;
}

// A character above U+FFFF has two units, which are replaced one by one.
void appendCodePage1252(std::string& wire, std::string_view utf8) {
    for (moveAscii(wire, utf8, 1); !utf8.empty(); moveAscii(wire, utf8, 1)) {
        const char32_t c = nextCharacter(utf8);
        wire.append(static_cast<std::size_t>(Utf16::width(c)), static_cast<char>(codePage1252(c)));
    }
}

}  // namespace tsql

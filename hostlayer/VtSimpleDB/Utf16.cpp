#include "Utf16.h"

#include <algorithm>
#include <cwchar>
#include <locale>

namespace hostlayer {
namespace {

// Locale-independent conversion of the standard library, which loads no table at run time as iconv does.
struct Converter : std::codecvt<char16_t, char8_t, std::mbstate_t> {
    ~Converter() override = default;
};

const char8_t* octets(std::string_view utf8) {
    return reinterpret_cast<const char8_t*>(utf8.data());
}

// Offset of the first encoded surrogate, or the size. Surrogates are not valid in UTF-8 (RFC 3629, section
// 3), but the converter accepts them.
std::size_t firstSurrogate(std::string_view utf8) {
    const auto found = std::adjacent_find(utf8.begin(), utf8.end(), [](char lead, char next) {
        return lead == '\xED' && static_cast<unsigned char>(next) >= 0xA0;
    });
    return static_cast<std::size_t>(found - utf8.begin());
}

}  // namespace

std::size_t toUtf16(std::string_view utf8, std::u16string& wide) {
    wide.resize(utf8.size());  // a character never has more UTF-16 units than UTF-8 bytes
    const char8_t* const begin = octets(utf8);
    const char8_t* read = begin;
    char16_t* written = wide.data();
    std::mbstate_t state{};
    Converter().in(state, begin, begin + firstSurrogate(utf8), read, wide.data(), wide.data() + wide.size(),
                   written);
    wide.resize(static_cast<std::size_t>(written - wide.data()));
    const auto converted = static_cast<std::size_t>(read - begin);
    return converted == utf8.size() ? std::string_view::npos : converted;
}

std::string toUtf8(std::u16string_view wide) {
    constexpr std::size_t kMaxBytesPerUnit = 3;
    std::string utf8(kMaxBytesPerUnit * wide.size(), '\0');
    auto* const begin = reinterpret_cast<char8_t*>(utf8.data());
    const char16_t* read = wide.data();
    char8_t* written = begin;
    std::mbstate_t state{};
    Converter().out(state, wide.data(), wide.data() + wide.size(), read, begin, begin + utf8.size(), written);
    utf8.resize(static_cast<std::size_t>(written - begin));
    return utf8;
}

}  // namespace hostlayer

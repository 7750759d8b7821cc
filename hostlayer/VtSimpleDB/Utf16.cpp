#include "Utf16.h"

#include <algorithm>
#include <cwchar>
#include <locale>

namespace hostlayer {
namespace {

// The standard library's own tables: nothing is loaded for a conversion, and no locale has a say.
struct Converter : std::codecvt<char16_t, char8_t, std::mbstate_t> {
    ~Converter() override = default;
};

const char8_t* octets(std::string_view utf8) {
    return reinterpret_cast<const char8_t*>(utf8.data());
}

// Halves of a pair that are written as characters of their own, which the converter would let pass.
std::size_t firstSurrogate(std::string_view utf8) {
    const auto found = std::adjacent_find(utf8.begin(), utf8.end(), [](char lead, char next) {
        return lead == '\xED' && static_cast<unsigned char>(next) >= 0xA0;
    });
    return static_cast<std::size_t>(found - utf8.begin());
}

}  // namespace

std::size_t toUtf16(std::string_view utf8, std::u16string& wide) {
    wide.resize(utf8.size());  // no character has more units than bytes
    const char8_t* const begin = octets(utf8);
    const char8_t* read = begin;
    char16_t* written = wide.data();
    std::mbstate_t state{};
    Converter().in(state, begin, begin + firstSurrogate(utf8), read, wide.data(), wide.data() + wide.size(),
                   written);
    wide.resize(static_cast<std::size_t>(written - wide.data()));
    const auto done = static_cast<std::size_t>(read - begin);
    return done == utf8.size() ? std::string_view::npos : done;
}

std::string toUtf8(std::u16string_view wide) {
    constexpr std::size_t kMostBytes = 3;  // for one unit
    std::string utf8(kMostBytes * wide.size(), '\0');
    auto* const begin = reinterpret_cast<char8_t*>(utf8.data());
    const char16_t* read = wide.data();
    char8_t* written = begin;
    std::mbstate_t state{};
    Converter().out(state, wide.data(), wide.data() + wide.size(), read, begin, begin + utf8.size(), written);
    utf8.resize(static_cast<std::size_t>(written - begin));
    return utf8;
}

}  // namespace hostlayer

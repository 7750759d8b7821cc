#include "RowText.h"

#include <algorithm>
#include <cstdlib>

#include "TextAsFormat.h"

namespace {

std::size_t readLength(int count) {
    return kFieldSize * static_cast<std::size_t>(std::max(count, 0));
}

template <typename Char>
std::vector<std::basic_string<Char>> split(std::basic_string_view<Char> row, Char separator, int count) {
    std::vector<std::basic_string<Char>> fields;
    const auto wanted = static_cast<std::size_t>(std::max(count, 0));
    while (fields.size() < wanted) {
        row.remove_prefix(std::min(row.find_first_not_of(separator), row.size()));
        if (row.empty()) break;
        const auto field = row.substr(0, row.find(separator));
        fields.push_back(textAsFormat(field, kFieldLength));
        row.remove_prefix(field.size());
    }
    fields.resize(wanted);
    return fields;
}

// Length of the UTF-8 character that begins with `lead`; 0 for an invalid lead byte.
std::size_t utf8Length(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

// Decodes the first character and removes it from `text`. If it is invalid: false, and one byte is removed.
bool decodeCharacter(std::string_view& text, wchar_t& character) {
    // The smallest code of each length; below it a shorter form exists.
    constexpr unsigned int kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = utf8Length(lead);
    const std::string_view rest = text.substr(1, length == 0 ? 0 : length - 1);
    text.remove_prefix(1);
    if (length == 0 || rest.size() + 1 < length) return false;
    unsigned int code = length == 1 ? lead : lead & (0x7FU >> length);
    for (const char c : rest) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80U) return false;
        code = code << 6U | (byte & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kSmallest[length] || surrogate || code > 0x10FFFF) return false;
    text.remove_prefix(rest.size());
    character = static_cast<wchar_t>(code);
    return true;
}

}  // namespace

std::vector<std::string> splitRow(std::string_view row, char separator, int count) {
    return split(row.substr(0, readLength(count)), separator, count);
}

std::vector<std::wstring> splitRow(std::wstring_view row, wchar_t separator, int count) {
    const std::wstring interpreted = textAsFormat(row, readLength(count));
    return split<wchar_t>(interpreted, separator, count);
}

int leadingNumber(const std::string& text) {
    return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

std::wstring wideText(std::string_view utf8) {
    constexpr wchar_t kReplacement = 0xFFFD;
    std::wstring wide;
    wide.reserve(utf8.size());
    while (!utf8.empty()) {
        wchar_t character = 0;
        wide += decodeCharacter(utf8, character) ? character : kReplacement;
    }
    return wide;
}

#include "RowText.h"

#include <algorithm>
#include <cstdlib>

#include "TextAsFormat.h"
#include "Utf8.h"

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
        char32_t character = 0;
        wide += decodeUtf8(utf8, character) ? static_cast<wchar_t>(character) : kReplacement;
    }
    return wide;
}

// ASCII string helpers of the script and option readers.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace sqlcmd {

constexpr std::string_view kBlanks = " \t\r\n\f\v";

constexpr char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

inline std::string lowerCase(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = lowerCase(c);
    return result;
}

inline std::string upperCase(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
    return result;
}

inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// True for letters, digits, '_' and bytes of non-ASCII characters.
constexpr bool isWordCharacter(char c) {
    return (lowerCase(c) >= 'a' && lowerCase(c) <= 'z') || isDigit(c) || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

constexpr std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Removes the first word and the blanks around it from `text` and returns the word.
constexpr std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    const auto end = std::min(text.find_first_of(kBlanks), text.size());
    const std::string_view word = text.substr(0, end);
    text = trimmed(text.substr(end));
    return word;
}

}  // namespace sqlcmd

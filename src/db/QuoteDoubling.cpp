#include "QuoteDoubling.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

constexpr std::size_t kMostMatches = 10;

// Calls `found` with the start of each occurrence, from left to right, without backtracking.
template <typename Found>
void scan(std::string_view text, std::string_view find, Found found) {
    std::size_t matched = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        matched = text[i] == find[matched] ? matched + 1 : 0;
        if (matched != find.size()) continue;
        found(i + 1 - matched);
        matched = 0;
    }
}

struct Matches {
    std::array<std::size_t, kMostMatches> starts{};
    std::size_t count = 0;
};

Matches firstMatches(std::string_view text, std::string_view find) {
    Matches matches;
    scan(text, find, [&](std::size_t start) {
        if (matches.count < kMostMatches) matches.starts[matches.count++] = start;
    });
    return matches;
}

std::size_t lastMatch(std::string_view text, std::string_view find) {
    std::size_t last = text.npos;
    scan(text, find, [&](std::size_t start) { last = start; });
    return last;
}

// Replaces `length` characters at `start` and moves the rest with its NUL.
void replaceAt(char* text, std::size_t start, std::size_t length, std::string_view replacement) {
    char* rest = text + start + length;
    std::memmove(text + start + replacement.size(), rest, std::strlen(rest) + 1);
    replacement.copy(text + start, replacement.size());
}

void replaceByLonger(char* text, std::string_view find, std::string_view replacement,
                     const Matches& matches) {
    std::size_t start = matches.starts[0];
    for (std::size_t pass = 0; pass < matches.count && start != std::string_view::npos; ++pass) {
        replaceAt(text, start, find.size(), replacement);
        start = lastMatch(text, find);
    }
}

void replaceByShorter(char* text, std::string_view find, std::string_view replacement,
                      const Matches& matches) {
    const std::size_t difference = find.size() - replacement.size();
    for (std::size_t i = 0; i < matches.count; ++i)
        replaceAt(text, matches.starts[i] - i * difference, find.size(), replacement);
}

}  // namespace

void doubleQuotes(std::string& text) {
    const auto quotes = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\''));
    if (quotes == 0) return;
    std::string doubled;
    doubled.reserve(text.size() + quotes);
    for (const char c : text) doubled.append(c == '\'' ? 2 : 1, c);
    text = std::move(doubled);
}

void replaceInPlace(char* text, const char* find, const char* replacement) {
    const std::string_view sought = find;
    const std::string_view put = replacement;
    if (sought.empty()) return;
    const Matches matches = firstMatches(text, sought);
    if (matches.count == 0) return;
    if (put.size() > sought.size())
        replaceByLonger(text, sought, put, matches);
    else  // or equally long
        replaceByShorter(text, sought, put, matches);
}

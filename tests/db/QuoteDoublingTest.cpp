#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "DVUtilities/DBBase.h"

namespace {

// The buffer has no NUL but the text's, and nothing behind the longer of the two texts changes.
std::string replaced(const std::string& text, const char* find, const char* replacement) {
    std::array<char, 256> buffer{};
    buffer.fill('#');
    text.copy(buffer.data(), text.size());
    buffer.at(text.size()) = '\0';
    DBBase(true).ReplaceString(buffer.data(), find, replacement);
    const std::string result(buffer.data(), strnlen(buffer.data(), buffer.size()));
    EXPECT_EQ(buffer.at(std::max(text.size(), result.size()) + 1), '#') << text;
    return result;
}

TEST(QuoteDoubling, StringFormDoublesEveryQuote) {
    DBBase db(true);
    for (const auto& [text, expected] : {std::pair<std::string, std::string>{"O'Brien", "O''Brien"},
                                         {"'a'b'", "''a''b''"},
                                         {"", ""},
                                         {"none", "none"}}) {
        std::string value = text;
        db.fixTheString(value);
        EXPECT_EQ(value, expected);
    }
}

TEST(QuoteDoubling, BufferFormWorksOnTheLastQuoteAfterTheFirstPass) {
    const std::pair<const char*, const char*> cases[] = {
        {"O'Brien", "O''Brien"},
        {"a'b'c", "a''b''c"},
        {"'a'b'", "''a'b'''"},  // the quote in the middle stays single
        {"''", "''''"},
        {"none", "none"}};
    for (const auto& [text, expected] : cases) {
        std::array<char, 64> buffer{};
        std::string(text).copy(buffer.data(), buffer.size());
        DBBase(true).fixTheString(buffer.data());
        EXPECT_STREQ(buffer.data(), expected);
        EXPECT_EQ(replaced(text, "'", "''"), expected);
    }
    DBBase(true).fixTheString(static_cast<char*>(nullptr));
}

TEST(QuoteDoubling, ReplacesAtMostTenOccurrences) {
    EXPECT_EQ(replaced(std::string(12, 'x'), "x", "y"), "yyyyyyyyyyxx");
    EXPECT_EQ(replaced("x-x-x-x-x-x-x-x-x-x-x-x", "x-", ""), "x-x");
    EXPECT_EQ(replaced(std::string(12, '\''), "'", "''"), std::string(22, '\''));
}

TEST(QuoteDoubling, SearchNeverLooksBack) {
    const struct {
        const char *text, *find, *replacement, *expected;
    } cases[] = {
        {"aab", "ab", "x", "aab"},  // the mismatch swallowed the second a
        {"ab-ab", "ab", "X", "X-X"},    {"abcabc", "abc", "xyz", "xyzxyz"}, {"aaaa", "aa", "b", "bb"},
        {"abab", "ab", "qqa", "qqaab"},  // what is left is not found again
        {"text", "", "x", "text"},      {"text", nullptr, nullptr, "text"}, {"text", "t", nullptr, "ex"}};
    for (const auto& c : cases) EXPECT_EQ(replaced(c.text, c.find, c.replacement), c.expected) << c.text;
}

}  // namespace

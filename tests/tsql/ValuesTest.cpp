#include "types/Values.h"

#include <gtest/gtest.h>

#include "types/Text.h"

namespace {

using namespace tsql;

SqlType type(std::string_view text) {
    std::vector<int> arguments;
    const auto open = text.find('(');
    for (auto at = open; at != std::string_view::npos; at = text.find(',', at + 1)) {
        const std::string digits(text.substr(at + 1));
        arguments.push_back(digits.starts_with("max") ? SqlType::kMax : std::stoi(digits));
    }
    return makeType(text.substr(0, open), arguments, TypeUse::Cast);
}

TEST(Values, TypeNames) {
    const std::pair<const char*, const char*> cases[] = {
        {"INTEGER", "int"},
        {"numeric", "decimal(18,0)"},
        {"dec(9,2)", "decimal(9,2)"},
        {"varchar", "varchar(30)"},
        {"national character varying(5)", "nvarchar(5)"},
        {"float(24)", "real"},
        {"datetime2", "datetime2(7)"},
        {"varbinary(max)", "varbinary(max)"},
        {"sysname", "nvarchar(128)"},
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(displayName(type(name)), expected);
        EXPECT_EQ(decodeType(encodeType(type(name))), type(name));
    }
    const std::pair<const char*, int> refused[] = {
        {"foo", 243},          {"varchar(0)", 1001},  {"varchar(8001)", 131}, {"char(max)", 1001},
        {"decimal(39)", 2750}, {"decimal(5,6)", 192}, {"int(4)", 2716},       {"time(8)", 1002}};
    for (const auto& [name, number] : refused) try {
            type(name);
            ADD_FAILURE() << name;
        } catch (const SqlError& error) {
            EXPECT_EQ(error.number, number) << name;
        }
}

TEST(Values, LikeAndCollation) {
    struct Case {
        const char *text, *pattern;
        char32_t escape;
        bool matches;
    };
    const Case cases[] = {
        {"Hello", "h%o", 0, true},     {"hello  ", "HELLO", 0, true}, {"hello", "h_llo", 0, true},
        {"cat", "[a-c]at", 0, true},   {"dat", "[^a-c]at", 0, true},  {"cat", "[^a-c]at", 0, false},
        {"50%", "50!%", U'!', true},   {"501", "50!%", U'!', false},  {"a[b", "a[[]b", 0, true},
        {"a]", "a[]]", 0, false},      {"a_b", "a[_]b", 0, true},     {"axb", "a[_]b", 0, false},
        {"Größe", "%RÖSS%", 0, false}, {"GRÖSSE", "%rös%", 0, true},  {"", "%", 0, true},
        {"", "_", 0, false},           {"aaab", "%a%ab", 0, true},    {"abc", "ab", 0, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(matchesLike(c.text, c.pattern, EndBlanks::Ignored, c.escape), c.matches)
            << c.text << ' ' << c.pattern;
    EXPECT_EQ(compareText("ÄÖ  ", "äö"), 0);
    EXPECT_EQ(compareText("ПРИВЕТ", "привет"), 0);
    EXPECT_LT(compareText("a", "B"), 0);
    EXPECT_GT(compareText("a", "a\t"), 0);
}

}  // namespace

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

// The value that a text makes in one type, converted to another and shown; "error N" when that fails.
std::string converted(std::string_view text, std::string_view from, std::string_view to, int style = kNoStyle,
                      Conversion kind = Conversion::Cast) {
    try {
        const SqlType source = type(from), target = type(to);
        const Value value =
            convertValue(text, varcharType(SqlType::kMax), source, isBinary(source.id) ? 1 : kNoStyle);
        const Value result = convertValue(viewOf(value), source, target, style, kind);
        if (isNull(result)) return "NULL";
        if (isBinary(target.id))
            return std::get<std::string>(convertValue(viewOf(result), target, varcharType(SqlType::kMax), 1));
        return textOf(viewOf(result), target);
    } catch (const SqlError& error) {
        return "error " + std::to_string(error.number);
    }
}

TEST(Values, ConvertBetweenTypes) {
    struct Case {
        const char *value, *from, *to;
        int style;
        const char* expected;
    };
    const int none = kNoStyle;
    const Case cases[] = {
        {" -12 ", "varchar(9)", "int", none, "-12"},
        {"", "varchar(9)", "int", none, "0"},
        {"abc", "varchar(9)", "int", none, "error 245"},
        {"1.5", "varchar(9)", "int", none, "error 245"},
        {"abc", "varchar(9)", "bigint", none, "error 8114"},
        {"2147483648", "varchar(20)", "int", none, "error 248"},
        {"300", "varchar(9)", "tinyint", none, "error 244"},
        {"300", "int", "tinyint", none, "error 220"},
        {"3000000000", "bigint", "int", none, "error 8115"},
        {"true", "varchar(9)", "bit", none, "1"},
        {"7", "int", "bit", none, "1"},
        {"-1.99", "decimal(9,2)", "int", none, "-1"},
        {"1.5", "money", "int", none, "2"},
        {"-2.9", "float", "int", none, "-2"},
        {"1e10", "float", "int", none, "error 232"},
        {"1.255", "varchar(9)", "decimal(9,2)", none, "1.26"},
        {"-1.255", "decimal(9,3)", "decimal(9,2)", none, "-1.26"},
        {"1000", "int", "decimal(4,2)", none, "error 8115"},
        {"x", "varchar(9)", "decimal(4,2)", none, "error 8114"},
        {"99999999999999999999", "varchar(30)", "decimal(38,0)", none, "99999999999999999999"},
        {"99999999999999999999", "varchar(30)", "decimal(38,19)", none, "error 8115"},
        {"0.001", "decimal(30,9)", "bit", none, "1"},
        {"0.1", "float", "decimal(9,8)", none, "0.10000000"},
        {"$1,234.567", "varchar(20)", "money", none, "1234.57"},
        {"1234567.891", "money", "varchar(20)", 1, "1,234,567.89"},
        {"-123.4567", "money", "varchar(20)", 2, "-123.4567"},
        {"-123.4", "money", "varchar(20)", 1, "-123.40"},
        {"1234567", "float", "varchar(30)", none, "1.23457e+006"},
        {"0.5", "float", "varchar(30)", none, "0.5"},
        {"0.1", "float", "varchar(30)", 2, "1.000000000000000e-001"},
        {"12345", "int", "varchar(3)", none, "*"},
        {"12345", "int", "nvarchar(3)", none, "error 8115"},
        {"1.25", "decimal(9,2)", "varchar(3)", none, "error 8115"},
        {"abcdef", "varchar(9)", "varchar(3)", none, "abc"},
        {"äöü", "nvarchar(9)", "nvarchar(2)", none, "äö"},
        {"ab", "varchar(9)", "char(4)", none, "ab  "},
        {"2026-11-21 13:05:07.123", "datetime", "varchar(40)", none, "Nov 21 2026  1:05PM"},
        {"2026-11-01 00:05:07.125", "datetime", "varchar(40)", 109, "Nov  1 2026 12:05:07:127AM"},
        {"2026-11-21 13:05:07", "datetime", "varchar(10)", 120, "2026-11-21"},
        {"2026-11-21 13:05:07.999", "datetime", "varchar(40)", 121, "2026-11-21 13:05:08.000"},
        {"2026-11-21 13:05:07", "datetime", "varchar(40)", 126, "2026-11-21T13:05:07"},
        {"2026-11-21 13:05:07", "datetime", "varchar(40)", 1, "11/21/26"},
        {"2026-11-21 13:05:07", "datetime", "varchar(40)", 112, "20261121"},
        {"2026-11-21 13:05:07", "datetime", "varchar(40)", 6, "21 Nov 26"},
        {"2026-11-21 13:05:07", "datetime", "varchar(40)", 8, "13:05:07"},
        {"2026-11-21 13:05:07", "datetime", "varchar(40)", 114, "13:05:07:000"},
        {"2026-11-21 13:05:07", "datetime", "varchar(40)", 130, "error 50000"},
        {"2026-11-21 13:05:07", "datetime", "date", none, "2026-11-21"},
        {"2026-11-21", "date", "varchar(40)", 100, "Nov 21 2026"},
        {"13:05:07.5", "time(1)", "varchar(40)", none, "13:05:07.5"},
        {"2026-11-21 13:05:29.999", "datetime2(3)", "smalldatetime", none, "Nov 21 2026  1:06PM"},
        {"21/11/2026", "varchar(20)", "datetime", 103, "Nov 21 2026 12:00AM"},
        {"21/11/2026", "varchar(20)", "datetime", none, "error 242"},
        {"1600-01-01", "varchar(20)", "datetime", none, "error 242"},
        {"1.5", "float", "datetime", none, "Jan  2 1900 12:00PM"},
        {"2026-11-21", "date", "int", none, "error 529"},
        {"1900-01-03 13:00", "datetime", "int", none, "3"},
        {"A", "varchar(9)", "varbinary(4)", none, "0x41"},
        {"A", "nvarchar(9)", "binary(4)", none, "0x41000000"},
        {"258", "int", "varbinary(8)", none, "0x00000102"},
        {"0x0102", "varbinary(8)", "int", none, "258"},
        {"0x4162", "varbinary(8)", "varchar(9)", none, "Ab"},
        {"0x4162", "varbinary(8)", "varchar(9)", 2, "4162"},
        {"0x41G2", "varchar(9)", "varbinary(9)", 1, "error 8114"},
        {"6f9619ff-8b86-d011-b42d-00c04fc964ff", "varchar(40)", "uniqueidentifier", none,
         "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
        {"6F9619FF-8B86-D011-B42D-00C04FC964FF", "uniqueidentifier", "binary(16)", none,
         "0xFF19966F868B11D0B42D00C04FC964FF"},
        {"6F9619FF", "varchar(40)", "uniqueidentifier", none, "error 8169"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(converted(c.value, c.from, c.to, c.style), c.expected)
            << c.value << ' ' << c.from << ' ' << c.to << ' ' << c.style;
    EXPECT_EQ(converted("abcd", "varchar(9)", "varchar(3)", kNoStyle, Conversion::Assign), "error 8152");
    EXPECT_EQ(converted("abc  ", "varchar(9)", "varchar(3)", kNoStyle, Conversion::Assign), "abc");
    EXPECT_EQ(converted("abcd", "varchar(9)", "int", kNoStyle, Conversion::Try), "NULL");
}

TEST(Values, DateTextsThatAreRead) {
    const std::pair<const char*, const char*> cases[] = {
        {"2026-11-21", "2026-11-21 00:00:00.0000000"},
        {"20261121 1:05pm", "2026-11-21 13:05:00.0000000"},
        {"261121", "2026-11-21 00:00:00.0000000"},
        {"2026-11-21T13:05:07.1234567", "2026-11-21 13:05:07.1234567"},
        {"2026-11-21T13:05:07Z", "2026-11-21 13:05:07.0000000"},
        {"Nov 21 2026  1:05PM", "2026-11-21 13:05:00.0000000"},
        {"21 november 2026 12:00 am", "2026-11-21 00:00:00.0000000"},
        {"November 21, 49", "2049-11-21 00:00:00.0000000"},
        {"11/21/2026 13:05:07:003", "2026-11-21 13:05:07.0030000"},
        {"13:05", "1900-01-01 13:05:00.0000000"},
        {"5 PM", "1900-01-01 17:00:00.0000000"},
        {"", "1900-01-01 00:00:00.0000000"},
        {"2024-02-29", "2024-02-29 00:00:00.0000000"},
        {"2026-02-29", nullptr},
        {"2026-13-01", nullptr},
        {"2026-257-01", nullptr},
        {"1/1/67562", nullptr},
        {"24:00", nullptr},
        {"21 2026", nullptr},
        {"Nov", nullptr},
        {"2026-11-21 13:05:60", nullptr},
        {"yesterday", nullptr},
        {"2026-11-21 x", nullptr},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(converted(text, "varchar(40)", "datetime2"), expected ? expected : "error 241") << text;
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
        {"foo", 2715},         {"varchar(0)", 1001},  {"varchar(8001)", 131}, {"char(max)", 1001},
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
        {"a]", "a[]]", 0, true},       {"a_b", "a[_]b", 0, true},     {"axb", "a[_]b", 0, false},
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

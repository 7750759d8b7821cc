#include <gtest/gtest.h>
#include <sql.h>
#include <sqlext.h>
#include <sys/stat.h>

#include "TempDir.h"
#include "text/Errors.h"
#include "text/Output.h"
#include "text/Utf.h"
#include "values/ColumnFormat.h"

using namespace sqlcmd;

namespace {

TEST(ColumnFormat, WidthsFollowTypesNamesAndOptions) {
    struct Case {
        ColumnInfo column;
        Layout layout;
        std::size_t width;
        bool rightAligned;
    };
    Layout narrow;
    narrow.shortTypeWidth = 5;
    narrow.longTypeWidth = 7;
    Layout unlimited;
    unlimited.longTypeWidth = 0;
    const Case cases[] = {
        {{"i", "int", SQL_INTEGER, 10}, {}, 11, true},
        {{"a name of 20 letters", "int", SQL_INTEGER, 10}, {}, 20, true},
        {{"d", "decimal", SQL_DECIMAL, 18}, {}, 20, true},
        {{"m", "money", SQL_DECIMAL, 19}, {}, 24, true},
        {{"t", "datetime", SQL_TYPE_TIMESTAMP, 23}, {}, 23, false},
        {{"t", "datetime2", SQL_TYPE_TIMESTAMP, 27}, {}, 38, false},
        {{"v", "varchar", SQL_VARCHAR, 40}, {}, 40, false},
        {{"v", "varchar", SQL_VARCHAR, 40}, narrow, 5, false},
        {{"v", "varchar", SQL_VARCHAR, 8000}, narrow, 5, false},
        {{"v", "varchar", SQL_VARCHAR, 8001}, narrow, 7, false},
        {{"b", "varbinary", SQL_VARBINARY, 8}, {}, 18, false},
        {{"x", "varchar", SQL_VARCHAR, 0}, {}, 256, false},
        {{"x", "ntext", SQL_WLONGVARCHAR, 1073741823}, narrow, 7, false},
        {{"x", "xml", -152, 0}, unlimited, 0, false},
    };
    for (const Case& c : cases) {
        const ColumnFormat format = formatOf(c.column, c.layout);
        EXPECT_EQ(format.width, c.width) << c.column.typeName;
        EXPECT_EQ(format.rightAligned, c.rightAligned) << c.column.typeName;
    }
}

TEST(ColumnFormat, ShapesValues) {
    const auto shaped = [](const ColumnInfo& column, std::string_view value, const Layout& layout = {}) {
        TextBuffer text;
        text.append(value);
        shapeValue(text, 0, formatOf(column, layout));
        return std::string(text.view());
    };
    Layout narrow;
    narrow.shortTypeWidth = 3;
    EXPECT_EQ(shaped({"", "decimal", SQL_DECIMAL, 5}, "0.50"), ".50");
    EXPECT_EQ(shaped({"", "decimal", SQL_DECIMAL, 5}, "-0.50"), "-.50");
    EXPECT_EQ(shaped({"", "decimal", SQL_DECIMAL, 5}, "10.50"), "10.50");
    EXPECT_EQ(shaped({"", "real", SQL_REAL, 7}, "1.10000002"), "1.1");
    EXPECT_EQ(shaped({"", "uniqueidentifier", SQL_GUID, 36}, "ab-cd"), "AB-CD");
    EXPECT_EQ(shaped({"", "binary", SQL_BINARY, 4}, "abcd01"), "0xABCD01");
    EXPECT_EQ(shaped({"", "varchar", SQL_VARCHAR, 9}, "é世é世", narrow), "é世é");
}

TEST(Utf, PadsAndCutsByCharacters) {
    TextBuffer line;
    appendPadded(line, "é世", 4, false);
    appendPadded(line, "é世", 4, true);
    EXPECT_EQ(line.view(), "é世    é世");
    const std::pair<std::string_view, std::size_t> tails[] = {
        {"a", 0}, {"\xC3", 1}, {"a\xE4\xB8", 2}, {"é", 0}, {"\x80\x80\x80", 0}};
    for (const auto& [text, tail] : tails) EXPECT_EQ(utf8IncompleteTail(text), tail);
}

TEST(Utf8, FindsTheFirstFault) {
    const std::pair<std::string_view, std::size_t> cases[] = {
        {"", std::string_view::npos},
        {"aü€😀\xEF\xBF\xBD", std::string_view::npos},
        {"ab\xFCr", 2},
        {"\xE2\x82", 0},
        {"a\xC0\x80", 1},
        {"\xE0\x80\x80", 0},
        {"\xED\xA0\x80", 0},
        {"ü\xF4\x90\x80\x80", 2},
    };
    for (const auto& [text, fault] : cases) EXPECT_EQ(firstInvalidUtf8(text), fault) << text;
}

TEST(Output, WritesUtf16AcrossItsBuffer) {
    const support::TempDir folder;
    const std::string path = folder / "out.txt";
    support::writeFile(path, "old content");
    chmod(path.c_str(), 0640);
    Output output(path, kUtf16Le);
    for (int i = 0; i < 30'000; ++i) output.write("x\xE4\xB8"), output.write("\x96\xF0\x9F\x98\x80");
    output.write("\xC3");
    output.flush();

    const std::string content = support::readFile(path);
    const std::string unit("x\0\x16\x4E\x3D\xD8\x00\xDE", 8);
    ASSERT_EQ(content.size(), 30'000 * unit.size() + 2);
    for (std::size_t i = 0; i + 2 < content.size(); i += unit.size())
        ASSERT_EQ(content.substr(i, unit.size()), unit);
    EXPECT_EQ(content.substr(content.size() - 2), "\xFD\xFF");
    struct stat status {};
    stat(path.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST(Output, ReportsAFullDisk) {
    Output output("/dev/full");
    output.write("text");
    try {
        output.flush();
        ADD_FAILURE();
    } catch (const ToolError& error) {
        EXPECT_STREQ(error.what(), "Sqlcmd: Error: cannot write to '/dev/full': No space left on device.");
    }
}

}  // namespace

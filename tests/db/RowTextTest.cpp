#include "RowText.h"

#include <gtest/gtest.h>

#include "DVUtilities/DBBase.h"

namespace {

constexpr char kSeparator = '\022';

TEST(RowText, SplitsIntoExactlyTheFieldsAskedFor) {
    using Fields = std::vector<std::string>;
    const std::tuple<const char*, int, Fields> cases[] = {
        {"12\022\022abc", 2, {"12", "abc"}},  // an empty field vanishes
        {"\022one\022", 3, {"one", "", ""}},        {"", 1, {""}}, {"a\022b\022c", 2, {"a", "b"}},
        {"50%% of %s\022%", 2, {"50% of %s", "%"}}, {"a", 0, {}},  {"a", -1, {}}};
    for (const auto& [row, count, expected] : cases)
        EXPECT_EQ(splitRow(row, kSeparator, count), expected) << row;
}

TEST(RowText, CutsFieldsTo128AndLooksAt129CharactersAField) {
    const std::string longField(200, 'x');
    EXPECT_EQ(splitRow(longField, kSeparator, 1)[0], std::string(128, 'x'));
    // 258 characters are looked at: of the second field, 57 remain.
    const auto fields = splitRow(longField + kSeparator + longField, kSeparator, 2);
    EXPECT_EQ(fields[1], std::string(57, 'x'));
}

TEST(RowText, WideRowsAreInterpretedTwice) {
    const auto fields = splitRow(std::wstring_view(L"50%%%% of\022%%"), L'\022', 3);
    EXPECT_EQ(fields, (std::vector<std::wstring>{L"50% of", L"%", L""}));
}

TEST(RowText, ParseRecordAllocatesOrReusesBuffers) {
    DBBase db(true);
    char** fields = nullptr;
    db.parseRecord("12\022name", fields, 2);
    ASSERT_NE(fields, nullptr);
    EXPECT_STREQ(fields[1], "name");
    char** const kept = fields;
    db.parseRecord("7", fields, 2);
    EXPECT_EQ(fields, kept);
    EXPECT_STREQ(fields[0], "7");
    EXPECT_STREQ(fields[1], "");
    db.parseRecord(static_cast<const char*>(nullptr), fields, 2);
    EXPECT_STREQ(fields[0], "");
    db.cleanupRecord(fields, 2);
    EXPECT_EQ(fields, nullptr);
    db.cleanupRecord(fields, 2);

    wchar_t** wide = nullptr;
    db.parseRecord(L"\x00e4\022z", wide, 2);
    EXPECT_STREQ(wide[0], L"\x00e4");
    EXPECT_STREQ(wide[1], L"z");
    db.cleanupRecord(wide, 2);
}

TEST(RowText, WideTextOfUtf8) {
    const std::pair<const char*, std::wstring> cases[] = {
        {"aä€😀z", L"a\u00E4\u20AC\U0001F600z"},
        {"\xEF\xBF\xBDx", L"\uFFFDx"},
        {"a\xC3", L"a\uFFFD"},
        {"\xC0\xAF", L"\uFFFD\uFFFD"},            // overlong
        {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},  // surrogate
        {"\xE2\x82x\xFF", L"\uFFFD\uFFFDx\uFFFD"}};
    for (const auto& [utf8, expected] : cases) EXPECT_EQ(wideText(utf8), expected) << utf8;
}

}  // namespace

#include "TextAsFormat.h"

#include <gtest/gtest.h>

#include "CallerText.h"

TEST(TextAsFormat, InterpretsPercentSignsWithoutReadingWhatIsNotThere) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {{"", ""},
                 {"plain", "plain"},
                 {"100%%", "100%"},
                 {"%%%%s", "%%s"},
                 {"%s", "%s"},  // no argument given
                 {"%n%d%*s%999999999d", "%n%d%*s%999999999d"},
                 {"ends in %", "ends in %"},
                 {"%%", "%"}};
    for (const auto& c : cases) EXPECT_EQ(textAsFormat(c.text), c.expected) << c.text;
    EXPECT_EQ(textAsFormat(L"5%% of %s"), L"5% of %s");
}

TEST(TextAsFormat, FillsArgumentsInOrderAndOnlyOnce) {
    EXPECT_EQ(textAsFormat("a %s b %%s c %s d %s", {"1", "%s"}), "a 1 b %s c %s d %s");
}

TEST(TextAsFormat, CutsWhatWasInterpreted) {
    EXPECT_EQ(textAsFormat("%%%%ab", 3), "%%a");
    EXPECT_EQ(textAsFormat("abc", 0), "");
    EXPECT_EQ(textAsFormat("abc%", 4), "abc%");
}

TEST(CallerText, CopiesNeverLeaveTheBuffer) {
    char buffer[5] = "....";
    copyCut(buffer, 4, "\xC3\xA4\xC3\xA4");  // cut between the bytes of a character
    EXPECT_STREQ(buffer, "\xC3\xA4\xC3");
    EXPECT_EQ(buffer[4], '\0');
    copyCut(buffer, 0, "x");
    EXPECT_STREQ(buffer, "\xC3\xA4\xC3");
    copyCut(nullptr, 4, "x");
}

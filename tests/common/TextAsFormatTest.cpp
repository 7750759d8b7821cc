#include "TextAsFormat.h"

#include <gtest/gtest.h>

TEST(TextAsFormat, InterpretsPercentSignsWithoutReadingMissingArguments) {
    const std::pair<const char*, const char*> cases[] = {{"", ""},
                                                         {"plain", "plain"},
                                                         {"100%%", "100%"},
                                                         {"%%%%s", "%%s"},
                                                         {"%s", "%s"},  // no argument given
                                                         {"%n%d%*s%999999999d", "%n%d%*s%999999999d"},
                                                         {"ends in %", "ends in %"},
                                                         {"%%", "%"}};
    for (const auto& [text, expected] : cases) EXPECT_EQ(textAsFormat(text), expected) << text;
    EXPECT_EQ(textAsFormat(L"5%% of %s"), L"5% of %s");
}

TEST(TextAsFormat, FillsArgumentsInOrderAndOnlyOnce) {
    EXPECT_EQ(textAsFormat("a %s b %%s c %s d %s", {"1", "%s"}), "a 1 b %s c %s d %s");
}

TEST(TextAsFormat, CutsAfterInterpreting) {
    EXPECT_EQ(textAsFormat("%%%%ab", 3), "%%a");
    EXPECT_EQ(textAsFormat("abc", 0), "");
    EXPECT_EQ(textAsFormat("abc%", 4), "abc%");
}

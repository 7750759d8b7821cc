#include "text/PlaceholderFiller.h"

#include <gtest/gtest.h>

namespace {

struct FillCase {
    const char* body;
    std::vector<std::string> values;
    const char* filled;
    const char* joined;
};

TEST(PlaceholderFiller, FillsPlaceholdersInOrder) {
    const FillCase cases[] = {
        {"", {"a"}, "", ""},
        {"no placeholder 5%", {"a", "b"}, "no placeholder 5%", ""},
        {"%s,%s,%s", {"a", "b"}, "[a],[b],%s", "a, b"},
        {"%s", {"a", "b"}, "[a]", "a"},
        {"%s%s", {"", "b"}, "[][b]", ", b"},
        {"100%% of %s", {"a"}, "100% of [a]", "a"},
        {"%s is 100%%", {"a"}, "[a] is 100%%", "a"},  // behind the last filled one nothing is interpreted
        {"LIKE 'x%d%n' %s", {"a"}, "LIKE 'x%d%n' [a]", "a"},
        {"%%s %s", {"a", "b"}, "%s [b]", "a, b"},  // a doubled sign eats the placeholder, not the value
        {"%s", {"%s%n"}, "[%s%n]", "%s%n"},
    };
    for (const FillCase& c : cases) {
        SCOPED_TRACE(c.body);
        std::string filled;
        PlaceholderFiller filler([](const std::string& value) { return "[" + value + "]"; },
                                 [&](std::string_view text) {
                                     filled += text;
                                     return true;
                                 });
        EXPECT_TRUE(filler.fill(c.body, c.values));
        EXPECT_EQ(filled, c.filled);
        EXPECT_EQ(filler.joinedValues(), c.joined);
    }
}

TEST(PlaceholderFiller, NoPieceOfALongSegmentEndsInsideAPair) {
    for (std::size_t length = (1 << 16) - 4; length < (1 << 16) + 4; ++length) {
        const std::string text(length, 'x');
        std::string filled;
        PlaceholderFiller filler([](const std::string& value) { return value; },
                                 [&](std::string_view piece) { return !filled.append(piece).empty(); });
        EXPECT_TRUE(filler.fill(text + "%%%%" + text + "%%%s", {"value"}));
        EXPECT_EQ(filled, text + "%%" + text + "%value") << length;
    }
}

TEST(PlaceholderFiller, BlanksPercentSignsOfBlockComments) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"%s /* %s %% */ %s", "%s /*  s    */ %s"},
        {"-- %s\n%s", "-- %s\n%s"},
        {"/* open %s", "/* open  s"},
        {"/*/ %s", "/*/ %s"},                    // the star serves both ends
        {"'/*' %s '*/' %s", "'/*'  s '*/' %s"},  // quotes do not count
        {"*/ %s /", "*/ %s /"},
        {"/* a /* b */ %s */", "/* a /* b */ %s */"},
    };
    for (const auto& [body, blanked] : cases) EXPECT_EQ(blankPercentSignsInComments(body), blanked);
}

}  // namespace

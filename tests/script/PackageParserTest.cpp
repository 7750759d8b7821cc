#include "PackageParser.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// Hands a text to the parser as the loader does: lines in pieces of at most 509 bytes. Returns how many lines
// stood outside the sections.
int parse(std::string_view text, PackageContent& content) {
    int ignored = 0;
    PackageParser parser(content, [&](PackageParser::Section section) {
        EXPECT_EQ(section, PackageParser::Section::kNone);
        ++ignored;
    });
    while (!text.empty()) {
        const std::size_t line = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view piece = text.substr(0, std::min(line, PackageParser::kPieceBuffer - 1));
        parser.take(piece);
        text.remove_prefix(piece.size());
    }
    return ignored;
}

PackageContent parsed(std::string_view text) {
    PackageContent content;
    parse(text, content);
    return content;
}

struct HeaderCase {
    const char* lines;
    std::time_t creationTime;
    std::int64_t plexumId;
    const char *database, *guid, *developer, *description;
};

TEST(PackageParser, ReadsHeaderLines) {
    constexpr std::time_t kGiven = 7;  // what the script had before
    const HeaderCase cases[] = {
        {"Creation Time: 1700000000\nPlexum ID:26\nDatabase Name:NQ2\nGUID:ab c\n", 1700000000, 26, "NQ2",
         "ab c", "", ""},
        {"Creation Time:\nPlexum ID:\nDatabase Name:\nGUID:\n", 0, 0, "", "", "", ""},
        {"Plexum ID:-5x\nDatabase Name: NQ2\n", kGiven, -5, " NQ2", "", "", ""},
        {"Plexum ID:4294967295\n", kGiven, -1, "", "", "", ""},  // 32 bits, widened with their sign
        {"more\nDeveloper Name:A\nB\nDescription:C\nD\n", kGiven, 0, "", "", "\nA\nB", "\nmore\nC\nD"},
        {"Developer Name:\nB\nDescription:\nD\n", kGiven, 0, "", "", "\nB", "\nD"},
        {"Developer Name:A\n#START_OPTIONS#\nB\n", kGiven, 0, "", "", "\nA\nB", ""},  // the switch stays
        {"Description: needs GUID:x\n", kGiven, 0, "", "x", "",
         ""},  // the first key in the order of the search
        {"GUID:1 Plexum ID:3\n", kGiven, 3, "", "", "", ""},
        {"\n\ncreation time:1\n", kGiven, 0, "", "", "", "\ncreation time:1"},
    };
    for (const HeaderCase& c : cases) {
        SCOPED_TRACE(c.lines);
        PackageContent content;
        content.creationTime = kGiven;
        parse(std::string("#START_OPTIONS#\n") + c.lines, content);
        EXPECT_EQ(content.creationTime, c.creationTime);
        EXPECT_EQ(content.plexumId, c.plexumId);
        EXPECT_EQ(content.databaseName, c.database);
        EXPECT_EQ(content.guid, c.guid);
        EXPECT_EQ(content.developerName, c.developer);
        EXPECT_EQ(content.description, c.description);
    }
}

struct SectionCase {
    const char* what;
    std::string text;
    std::string usage, body;
    int contentType, ignored;
};

TEST(PackageParser, DividesTextIntoSections) {
    const std::string l400(400, 'a'), l509(509, 'b'), l1200(1200, 'c');
    const SectionCase cases[] = {
        {"empty", "", "", "", 0, 0},
        {"lines outside", "one\n\ntwo\n#START_SCRIPT#\nSELECT 1", "", "SELECT 1", 0, 2},
        {"empty lines vanish", "#START_USAGE#\nu\n\nv\n#START_SCRIPT#\na\n\nb\n", "\nu\nv", "a\nb\n", 0, 0},
        {"later sections win", "#START_SCRIPT#\na\n#START_USAGE#\nu\n#START_SCRIPT#\nb\n#START_USAGE#\nv\n",
         "\nv", "b\n", 0, 0},
        {"a carriage return hides a marker", "#START_USAGE#\r\n#START_USAGE#\nu\r\n", "\nu\r", "", 0, 1},
        {"a blank hides a marker", "#START_USAGE#\n#START_SCRIPT# \n", "\n#START_SCRIPT# ", "", 0, 0},
        {"directive first", "#START_SCRIPT#\n\n x:XML ON\nb\n", "", " x:XML ON\nb\n", 2, 0},
        {"directive second", "#START_SCRIPT#\na\n:XML ON\n", "", "a\n:XML ON\n", 0, 0},
        {"long statement", "#START_SCRIPT#\n" + l1200 + "\nb\n", "", l1200 + "\nb\n", 0, 0},
        {"long usage line", "#START_USAGE#\n" + l1200 + "\n",
         "\n" + l1200.substr(0, 509) + "\n" + l1200.substr(0, 509) + "\n" + l1200.substr(0, 182), "", 0, 0},
        {"a line of one whole piece is glued to the next", "#START_SCRIPT#\n" + l509 + "\nb\n", "",
         l509 + "b\n", 0, 0},
        {"a piece can be a marker", "#START_SCRIPT#\n" + l509 + "#START_USAGE#\nu\n", "\nu", l509, 0, 0},
    };
    for (const SectionCase& c : cases) {
        SCOPED_TRACE(c.what);
        PackageContent content;
        EXPECT_EQ(parse(c.text, content), c.ignored);
        EXPECT_EQ(content.usage, c.usage);
        EXPECT_EQ(content.scriptBody, c.body);
        EXPECT_EQ(content.contentType, c.contentType);
    }
}

TEST(PackageParser, KeepsWhatAnUnopenedSectionHeld) {
    PackageContent content;
    content.usage = "earlier";
    content.description = "old";
    parse("#START_OPTIONS#\nnew\n", content);
    EXPECT_EQ(content.usage, "earlier");
    EXPECT_EQ(content.description, "old\nnew");
    EXPECT_EQ(parsed("#START_USAGE#\n").usage, "");
}

}  // namespace

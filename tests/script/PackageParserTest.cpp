#include "package/PackageParser.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// Hands a text to the parser as the loader does: lines in pieces of at most 509 bytes.
struct Parsed : PackageContent {
    explicit Parsed(std::string_view text, PackageContent before = {}) : PackageContent(std::move(before)) {
        PackageParser parser(*this, [&](PackageParser::Section) { ++ignored; });
        while (!text.empty()) {
            const std::size_t line = std::min(text.find('\n'), text.size() - 1) + 1;
            const std::size_t piece = std::min(line, PackageParser::kPieceBuffer - 1);
            parser.parse(text.substr(0, piece));
            text.remove_prefix(piece);
        }
    }
    int ignored = 0;  // lines outside the sections
};

TEST(PackageParser, ReadsHeaderLines) {
    // Lines, and what is read: time|site|database|GUID|developer|description.
    const std::pair<const char*, const char*> cases[] = {
        {"Creation Time: 1700000000\nPlexum ID:26\nDatabase Name:NQ2\nGUID:ab c\n",
         "1700000000|26|NQ2|ab c||"},
        {"Creation Time:\nPlexum ID:\nDatabase Name:\nGUID:\n", "0|0||||"},
        {"Plexum ID:-5x\nDatabase Name: NQ2\n", "7|-5| NQ2|||"},
        {"Plexum ID:4294967295\n", "7|-1||||"},  // 32 bits, widened with their sign
        {"more\nDeveloper Name:A\nB\nDescription:C\nD\n", "7|0|||\nA\nB|\nmore\nC\nD"},
        {"Developer Name:\nB\nDescription:\nD\n", "7|0|||\nB|\nD"},
        {"Developer Name:A\n#START_OPTIONS#\nB\n", "7|0|||\nA\nB|"},  // a marker does not turn the switch
        {"Description: needs GUID:x\n", "7|0||x||"},                  // the order of the search decides
        {"GUID:1 Plexum ID:3\n", "7|3||||"},
        {"\n\ncreation time:1\n", "7|0||||\ncreation time:1"},
    };
    for (const auto& [lines, read] : cases) {
        PackageContent before;
        before.creationTime = 7;
        const Parsed p(std::string("#START_OPTIONS#\n") + lines, before);
        EXPECT_EQ(std::to_string(p.creationTime) + "|" + std::to_string(p.plexumId) + "|" + p.databaseName +
                      "|" + p.guid + "|" + p.developerName + "|" + p.description,
                  read);
    }
}

TEST(PackageParser, DividesTextIntoSections) {
    const std::string l509(509, 'b'), l1200(1200, 'c');
    const struct {
        const char* what;
        std::string text, usage, body;
        int contentType, ignored;
    } cases[] = {
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
        {"long usage line", "#START_USAGE#\n" + l509 + l509 + "rest\n", "\n" + l509 + "\n" + l509 + "\nrest",
         "", 0, 0},
        {"a line of one whole piece is glued to the next", "#START_SCRIPT#\n" + l509 + "\nb\n", "",
         l509 + "b\n", 0, 0},
        {"a piece can be a marker", "#START_SCRIPT#\n" + l509 + "#START_USAGE#\nu\n", "\nu", l509, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Parsed parsed(c.text);
        EXPECT_EQ(parsed.ignored, c.ignored);
        EXPECT_EQ(parsed.usage, c.usage);
        EXPECT_EQ(parsed.scriptBody, c.body);
        EXPECT_EQ(parsed.contentType, c.contentType);
    }
}

}  // namespace

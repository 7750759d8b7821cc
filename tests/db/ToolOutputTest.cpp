#include "querytool/ToolOutput.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <functional>

#include "DVUtilities/DBBase.h"
#include "SampleInstallation.h"
#include "querytool/ToolMessages.h"

namespace {

using Rows = std::vector<std::string>;
using support::writeFile;

class ToolOutput : public testing::Test {
  protected:
    bool parse(std::string path, Rows& rows, int count) {
        return db.parseOutputFile(path.data(), rows, count);
    }

    support::TempDir folder;
    const std::string file = folder / "output.txt";
    DBBase db{true};
};

TEST_F(ToolOutput, Rows) {
    const std::string heading = "name  size\n----- ----\n";
    const std::tuple<std::string, int, Rows> cases[] = {
        {"", 1, {}},
        {"name", 1, {}},
        {heading + "\n(0 rows affected)\n", 2, {}},
        {heading + "a   b c  \n\n(1 rows affected)\n", 2, {"a\022b"}},
        {heading + "  a\nlast", 2, {"a\022", "last\022"}},  // fewer fields: a separator at the end
        {heading + "a b\n", 0, {"a"}},
        {heading + "   \nb\n", 1, {"", "b"}},
        {heading + std::string("a\0x b\n", 6), 2, {"a\022"}},
        {heading + "\r\nb\n", 1, {"\r", "b"}}};
    for (const auto& [content, count, expected] : cases) {
        writeFile(file, content);
        Rows rows = {"kept"};
        EXPECT_TRUE(parse(file, rows, count));
        EXPECT_EQ(Rows(rows.begin() + 1, rows.end()), expected) << content;
    }
}

TEST_F(ToolOutput, LinesThatLieAcrossBlocks) {
    std::string content = "h\n-\n";
    Rows expected;
    for (int i = 0; i < 60; ++i) {
        expected.push_back(std::to_string(i) + "\022" +
                           std::string(20000 + static_cast<std::size_t>(i), 'x'));
        content +=
            std::to_string(i) + " " + expected.back().substr(expected.back().find('\022') + 1) + " dropped\n";
    }
    writeFile(file, content);
    Rows rows;
    ASSERT_TRUE(parse(file, rows, 2));
    EXPECT_EQ(rows, expected);

    constexpr std::size_t kBlock = std::size_t{256} * 1024;
    const std::string full = "h\n-\n" + std::string(kBlock - 5, 'y') + "\n";
    ASSERT_EQ(full.size(), kBlock);
    writeFile(file, full + "z");  // one byte in the last block
    rows.clear();
    ASSERT_TRUE(parse(file, rows, 1));
    EXPECT_EQ(rows, (Rows{std::string(kBlock - 5, 'y'), "z"}));
}

TEST_F(ToolOutput, FileThatCannotBeRead) {
    const std::string log = folder / "db.log";
    db.SetAccountInfo("", "", "", log.c_str());
    Rows rows;
    for (const std::string& path : {std::string("/no/such/file"), folder.path().string()}) {
        EXPECT_FALSE(parse(path, rows, 1));
        EXPECT_EQ(db.getErrorMsg(), "Unable to open file: " + path + " !");
        EXPECT_EQ(support::logTexts(log).back(), db.getErrorMsg());
    }
    EXPECT_FALSE(db.parseOutputFile(nullptr, rows, 1));
}

TEST_F(ToolOutput, HalvesOfUtf16PairsInMessagesAreReplaced) {
    const std::u16string lines =
        u"\xDE00\nMsg 50000, Level 16, State 1, Server s, Line 1\na\xDE00"
        u"b\xD83D"
        u"c\xD83D\xDE00\n";
    writeFile(file, {reinterpret_cast<const char*>(lines.data()), 2 * lines.size()});
    const DVUCauses collector;
    noteToolMessages(file);
    std::vector<DVUCause_t> causes;
    collector.get(causes);
    ASSERT_EQ(causes.size(), 1U);
    EXPECT_EQ(causes[0].text, "a\uFFFDb\uFFFDc\U0001F600");
}

TEST_F(ToolOutput, AWatchedFileIsNoOldOne) {
    writeFile(file, "");
    const OutputWatch watch(file);
    EXPECT_TRUE(watch.isUnwritten());
    const auto anHourAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    EXPECT_GT(std::filesystem::last_write_time(file), anHourAgo);
    writeFile(file, "");
    EXPECT_FALSE(watch.isUnwritten());
}

TEST_F(ToolOutput, OnlyThisUsersFilesServeAsTemporaryOutput) {
    namespace fs = std::filesystem;
    const std::string victim = folder / "victim";
    const std::tuple<const char*, std::function<void()>, bool> cases[] = {
        {"nothing", [] {}, true},
        {"left from an earlier run", [&] { writeFile(file, "rows"); }, true},
        {"link", [&] { fs::create_symlink(victim, file); }, false},
        {"link to nothing", [&] { fs::create_symlink(folder / "absent", file); }, false},
        {"second name", [&] { fs::create_hard_link(victim, file); }, false},
        {"pipe", [&] { ASSERT_EQ(::mkfifo(file.c_str(), 0666), 0); }, false},
        {"folder", [&] { fs::create_directory(file); }, false}};
    for (const auto& [what, prepare, expected] : cases) {
        fs::remove(file);
        writeFile(victim, "");
        prepare();
        ASSERT_EQ(claimToolOutput(file), expected) << what;
        EXPECT_TRUE(!expected || fs::status(file).permissions() == fs::perms(0600)) << what;
        EXPECT_TRUE(!expected || fs::is_empty(file)) << what;
        const bool isUnwritten = expected;
        dropUnwrittenOutput(file);
        EXPECT_EQ(fs::exists(fs::symlink_status(file)), !isUnwritten) << what;
    }
    EXPECT_TRUE(fs::exists(victim) && !fs::exists(folder / "absent"));
    EXPECT_TRUE(claimToolOutput("/no/such/folder/output.txt")) << "the tool tells that";
}

}  // namespace

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "CVoFile.h"
#include "TempDir.h"
#include "files/OutputHeader.h"
#include "files/OutputReader.h"
#include "files/RunMark.h"
#include "files/UniqueFile.h"

namespace {

namespace fs = std::filesystem;

TEST(OutputHeader, IsDroppedOnlyAboveItsSeparator) {
    const std::string wide(1 << 20, 'n'), dashes(1 << 20, '-');
    std::vector<std::pair<std::string, std::string>> cases = {
        {"name\n----\nrow\n\nlast", "row\n\nlast\n"},
        {"a\tb\n-\t-\n", ""},
        {"n\n-", ""},
        {wide + "\n" + dashes + "\n" + wide + "\n", wide + "\n"},
        {"n\n-\n" + wide + "x", wide + "x\n"},  // one byte in the last block
    };
    for (const char* kept :
         {"", "\n", "\n\nrow\n", "name\n---\nrow", "name\n-----\nrow\n", "name\n--x-\nrow\n",
          "name\n\t---\nrow\n", "name\n---\t\nrow\n", "name\r\n----\r\nrow\r\n", "only one line"})
        cases.emplace_back(kept, kept);
    for (const auto& [before, after] : cases) {
        const support::TempDir folder;
        support::writeFile(folder / "out.log", before);
        support::writeFile(folder / "out.log.tscript.temp.txt", "left over");
        EXPECT_FALSE(removeOutputHeader(folder / "out.log").IsError());
        EXPECT_EQ(support::readFile(folder / "out.log"), after);
        const bool isAlone = std::distance(fs::directory_iterator(folder.path()), {}) == 1;
        EXPECT_TRUE(isAlone || before == after) << "nothing beside it";
    }
}

TEST(RunMark, IsHeldByOneObjectAFile) {
    const support::TempDir folder;
    const std::string path = folder / "out.log";
    support::writeFile(path, "");
    const RunMark first(path);
    EXPECT_TRUE(first.isHeld());
    EXPECT_FALSE(RunMark(path).isHeld()) << "it must not replace the one that is";
    fs::remove(path);
    EXPECT_FALSE(RunMark(path).isHeld());
    support::writeFile(path, "");
    EXPECT_TRUE(RunMark(path).isHeld()) << "another file of that name";
}

TEST(OutputHeader, LeavesTheFileWholeWhenTheScratchFileCannotBeMade) {
    const support::TempDir folder;
    support::writeFile(folder / "out.log", "n\n-\nrow\n");
    support::writeFile(folder / "victim", "untouched");
    fs::create_symlink(folder / "victim", folder / "out.log.tscript.temp.txt");
    EXPECT_EQ(removeOutputHeader(folder / "out.log").GetErrorCode(), EEXIST);
    EXPECT_EQ(support::readFile(folder / "out.log"), "n\n-\nrow\n");
    EXPECT_EQ(support::readFile(folder / "victim"), "untouched");
}

TEST(OutputReader, LosesNoByteButThoseBehindANulInItsChunk) {
    const support::TempDir folder;
    for (const std::size_t size : {0U, 1U, 4094U, 4095U, 4096U, 9000U, 600'000U}) {
        std::string content(size, 'x');
        for (std::size_t i = 0; i < size; i += 7) content[i] = static_cast<char>(i % 255 + 1);
        support::writeFile(folder / "out.log", content);
        CVoFile file;
        ASSERT_FALSE(file.Open((folder / "out.log").c_str(), "rb").IsError());
        std::string text = "heading";
        readRest(file, folder / "out.log", 4095, text);
        EXPECT_EQ(text, "heading" + content);
        if (size != 9000) continue;
        content[5000] = '\0';
        support::writeFile(folder / "out.log", content);
        ASSERT_FALSE(file.Open((folder / "out.log").c_str(), "rb").IsError());
        readRest(file, folder / "out.log", 4095, text = "");
        EXPECT_EQ(text, content.substr(0, 5000) + content.substr(2 * 4095));
    }
}

TEST(UniqueFile, FollowsNoLink) {
    const support::TempDir folder;
    fs::create_symlink(folder / "nowhere", folder / "link");
    int failures = 0;
    std::string path;
    CVoFile file;
    EXPECT_FALSE(createUnique(
        file, O_WRONLY, path, [&] { return folder / "link"; }, [&](const CVoError&) { ++failures; }));
    EXPECT_EQ(failures, 100);
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
}

TEST(UniqueFile, TakesNothingButAPrivateFileOfItsOwn) {
    const support::TempDir folder;
    for (const char* name : {"private", "shared"}) support::writeFile(folder / name, "old");
    fs::permissions(folder / "private", fs::perms::owner_read | fs::perms::owner_write);
    fs::permissions(folder / "shared", fs::perms::owner_all | fs::perms::group_read);
    fs::create_symlink(folder / "private", folder / "link");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    for (const char* name : {"shared", "link", "pipe", "absent"}) {
        EXPECT_FALSE(openPrivateFile((folder / name).c_str()).isOpen()) << name;
    }
    EXPECT_EQ(support::readFile(folder / "private"), "old");
    EXPECT_EQ(support::readFile(folder / "shared"), "old");
    EXPECT_TRUE(openPrivateFile((folder / "private").c_str()).isOpen());
    EXPECT_EQ(support::readFile(folder / "private"), "");
}

}  // namespace

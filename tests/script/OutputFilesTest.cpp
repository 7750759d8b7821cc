#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "CVoFile.h"
#include "OutputHeader.h"
#include "OutputReader.h"
#include "TempDir.h"
#include "UniqueFile.h"

namespace {

namespace fs = std::filesystem;

TEST(OutputHeader, IsDroppedOnlyAboveItsSeparator) {
    const std::string wide(1 << 20, 'n'), dashes(1 << 20, '-');
    const struct {
        std::string before, after;
    } cases[] = {
        {"name\n----\nrow\n\nlast", "row\n\nlast\n"},
        {"a\tb\n-\t-\n", ""},
        {"n\n-", ""},
        {wide + "\n" + dashes + "\n" + wide + "\n", wide + "\n"},
    };
    for (const auto& c : cases) {
        const support::TempDir folder;
        support::writeFile(folder / "out.log", c.before);
        EXPECT_FALSE(removeOutputHeader(folder / "out.log").IsError());
        EXPECT_EQ(support::readFile(folder / "out.log"), c.after);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << "nothing beside it";
    }
}

TEST(OutputHeader, StaysWithoutASeparator) {
    for (const char* text :
         {"", "\n", "\n\nrow\n", "name\n---\nrow", "name\n-----\nrow\n", "name\n--x-\nrow\n",
          "name\n\t---\nrow\n", "name\n---\t\nrow\n", "name\r\n----\r\nrow\r\n", "only one line"}) {
        const support::TempDir folder;
        support::writeFile(folder / "out.log", text);
        EXPECT_FALSE(removeOutputHeader(folder / "out.log").IsError());
        EXPECT_EQ(support::readFile(folder / "out.log"), text);
    }
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

TEST(OutputReader, LosesNoByte) {
    const support::TempDir folder;
    for (const std::size_t size : {0, 1, 4094, 4095, 4096, 9000}) {
        std::string content(size, 'x');
        for (std::size_t i = 0; i < size; i += 7) content[i] = static_cast<char>(i % 256);
        support::writeFile(folder / "out.log", content);
        CVoFile file;
        ASSERT_FALSE(file.Open((folder / "out.log").c_str(), "rb").IsError());
        std::string text = "heading";
        readRest(file, folder / "out.log", 4095, text);
        EXPECT_EQ(text, "heading" + content);
    }
}

struct Attempts {
    explicit Attempts(std::vector<std::string> givenPaths) : paths(std::move(givenPaths)) {}

    std::vector<std::string> paths;  // given in turn, the last one again and again
    std::size_t asked = 0;
    int failures = 0;
    std::string path;
    CVoFile file;

    bool create(int access) {
        return createUnique(
            file, access, path, [this] { return paths[std::min(asked++, paths.size() - 1)]; },
            [this](const CVoError&) { ++failures; });
    }
};

TEST(UniqueFile, PassesOverWhatExistsAndFollowsNoLink) {
    const support::TempDir folder;
    support::writeFile(folder / "taken", "mine");
    fs::create_symlink(folder / "nowhere", folder / "link");
    Attempts attempts({folder / "taken", folder / "link", folder / "new"});
    const mode_t mask = umask(0);
    EXPECT_TRUE(attempts.create(O_WRONLY));
    umask(mask);
    EXPECT_EQ(attempts.path, (folder / "new").string());
    EXPECT_EQ(attempts.failures, 1) << "the link was refused with a message, the file passed over without";
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
    EXPECT_EQ(fs::status(folder / "new").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(attempts.file.Write("x", 1).IsError());
    EXPECT_EQ(support::readFile(folder / "taken"), "mine");
}

TEST(UniqueFile, GivesUpAfterAHundredAttempts) {
    const support::TempDir folder;
    support::writeFile(folder / "taken", "");
    for (const auto& [path, failures] : {std::pair{folder / "taken", 0}, {folder / "absent" / "x", 100}}) {
        Attempts attempts({path});
        EXPECT_FALSE(attempts.create(O_RDONLY));
        EXPECT_EQ(attempts.asked, 100U);
        EXPECT_EQ(attempts.failures, failures);
        EXPECT_EQ(attempts.path, path.string());
    }
}

}  // namespace

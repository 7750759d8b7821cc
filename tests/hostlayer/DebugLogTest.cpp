#include <gtest/gtest.h>
#include <sys/stat.h>

#include <regex>
#include <thread>
#include <vector>

#include "EvDebug.h"
#include "TestStore.h"
#include "VTPI.h"

namespace {

// A log can be opened once in a process, so each test has one of its own name.
class LogFolder {
  public:
    LogFolder()
        : m_store("[Instance001.EventManager]\ndEVLOGDIR = '" + std::string(m_folder.path()) + "'\n") {}
    std::string read(const std::string& name) const { return support::readFile(m_folder / name); }
    const support::TempDir& path() const { return m_folder; }

  private:
    support::TempDir m_folder;
    TestStore m_store;
};

TEST(DebugLog, IsSilentUntilInitialised) {
    const LogFolder folder;
    EvDebug log("silent");
    log.Debug("tag", "%s", "nothing");
    EXPECT_FALSE(log.IsInitialized());
    EXPECT_TRUE(std::filesystem::is_empty(folder.path().path()));
    EXPECT_TRUE(log.initialize(1165352034, 0, false, ""));
    EXPECT_TRUE(EvDebug("silent").IsInitialized());
    EXPECT_FALSE(EvDebug("another").IsInitialized());
    EvDebug("silent").Debug("StartProcess", "code %d {} %%", 7);
    EXPECT_TRUE(std::regex_match(
        folder.read("silent.log"),
        std::regex("[-0-9]{10} [:.0-9]{12} \\d+ \\d+ I \\[StartProcess\\] code 7 \\{\\} %\n")))
        << folder.read("silent.log");
    struct stat status {};
    ASSERT_EQ(::stat((folder.path() / "silent.log").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST(DebugLog, TheDefaultLogOpensWithItsFirstEntryAsTheStoreSays) {
    const support::TempDir folder;
    const auto storeText = [&](const std::string& settings) {
        return "[host]\n" + settings + "[Instance001.EventManager]\ndEVLOGDIR = '" + folder.path().string() +
               "'\n";
    };
    const TestStore store(storeText("debugLogLevel = 0\n"));
    EvDebug().DebugLevel(1, "%s", "turned off");
    EXPECT_FALSE(EvDebug().initialize(0, 0, false, ""));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    store.write(storeText("debugLogLevel = 2\ndebugLogFile = 'own.log'\ndebugLogBytes = 1\n"));
    const std::string filler(1000, 'f');
    for (int i = 0; i < 70; ++i) EvDebug().DebugLevel(2, "%s", filler.c_str());
    EvDebug().DebugLevel(3, "%s", "below the level");
    EvDebug().DebugLevel(1, "%s", "kept");
    EXPECT_FALSE(EvDebug().IsInitialized());
    EXPECT_NE(support::readFile(folder / "own.log").find(" E kept\n"), std::string::npos);
    EXPECT_EQ(support::readFile(folder / "own.log").find("below"), std::string::npos);
    EXPECT_NE(support::readFile(folder / "own.1.log").find(filler), std::string::npos) << "rotated at 64 KiB";
}

TEST(DebugLog, NoTextPassesForAnotherEntry) {
    const LogFolder folder;
    EvDebug log("forgery");
    ASSERT_TRUE(log.initialize(0, 2, false, nullptr));
    log.DebugLevel(1, "%s", "first\n2026-01-01 00:00:00.000 1 1 E second\r\x1b[2K\n");
    log.Debug("tag\n2026", "%s", "third");
    log.DebugLevel(3, "%s", "below the level");
    const std::string text = folder.read("forgery.log");
    EXPECT_NE(text.find("E first\n    2026-01-01 00:00:00.000 1 1 E second\\x0D\\x1B[2K\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("[tag\n    2026] third\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("below"), std::string::npos);
}

TEST(DebugLog, AnEntryIsCutAt4MiBAndSaysHowLongItWas) {
    const LogFolder folder;
    EvDebug log("long");
    ASSERT_TRUE(log.initialize(0, 0, false, ""));
    constexpr std::size_t kMost = std::size_t{4} << 20;
    log.DebugLevel(1, "%s", std::string(kMost, 'x').c_str());
    log.Debug("tag", "%s", std::string(kMost, 'y').c_str());
    const std::string text = folder.read("long.log");
    EXPECT_NE(text.find(" E " + std::string(kMost, 'x') + "\n"), std::string::npos);
    EXPECT_NE(text.find("[tag] " + std::string(kMost - 6, 'y') + "... [cut, 4194310 bytes]\n"),
              std::string::npos);
}

TEST(DebugLog, FollowsNoLinkAndOpensNoPath) {
    const LogFolder folder;
    support::writeFile(folder.path() / "target", "untouched");
    std::filesystem::create_symlink(folder.path() / "target", folder.path() / "linked.log");
    EvDebug log("linked");
    EXPECT_FALSE(log.initialize(0, 0, false, ""));
    EXPECT_FALSE(log.initialize(0, 0, false, "../elsewhere.log"));
    EXPECT_EQ(folder.read("target"), "untouched");
    EXPECT_TRUE(log.initialize(0, 0, false, "other.log"));
}

TEST(DebugLog, ASettingThatOnlyBeginsWithANumberIsNone) {
    const LogFolder folder;
    const TestStore store("[host]\ndebugLogLevel = '0 entries'\n[Instance001.EventManager]\ndEVLOGDIR = '" +
                          folder.path().path().string() + "'\n");
    EXPECT_TRUE(EvDebug("odd").initialize(0, 0, false, ""));
}

// The rotation cannot open its new file. The entry after the one that it loses would fit into the old one.
TEST(DebugLog, OutlivesItsFolder) {
    const LogFolder folder;
    const std::string path = folder.path().path();
    const TestStore store("[host]\ndebugLogBytes = 1\n[Instance001.EventManager]\ndEVLOGDIR = '" + path +
                          "'\n");
    EvDebug log("orphan");
    ASSERT_TRUE(log.initialize(0, 0, false, ""));
    for (int i = 0; i < 60; ++i) log.Debug("t", "%s", std::string(1000, 'f').c_str());
    std::filesystem::remove_all(path);
    support::writeFile(path, "no folder");
    for (const std::size_t size : {5000U, 10U, 10U}) log.Debug("t", "%s", std::string(size, 'x').c_str());
    std::filesystem::remove(path);
    std::filesystem::create_directory(path);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    log.Debug("t", "%s", "back");
    EXPECT_NE(folder.read("orphan.log").find("[t] back\n"), std::string::npos);
}

TEST(DebugLog, ReportsABrokenStoreOnce) {
    const std::size_t before = defaultDebugLog().size();
    const TestStore store("[Instance001.Base]\nsText = \"open\n");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(VTPI_Base().getZephraTempDirectory(), "/tmp");
    const std::string text = defaultDebugLog().substr(before);
    const std::size_t at = text.find("Configuration store [" + store.path().string() + "]: line 2, column ");
    EXPECT_NE(at, std::string::npos) << text;
    EXPECT_EQ(text.find("Configuration store", at + 1), std::string::npos) << text;
}

TEST(DebugLog, ThreadsWriteWholeEntries) {
    const LogFolder folder;
    std::vector<std::thread> writers;
    for (int i = 0; i < 8; ++i) {
        writers.emplace_back([] {
            EvDebug log("threads");
            EXPECT_TRUE(log.initialize(0, 0, false, ""));
            for (int n = 0; n < 100; ++n) log.Debug("t", "%s", std::string(200, 'w').c_str());
        });
    }
    for (std::thread& writer : writers) writer.join();
    std::istringstream lines(folder.read("threads.log"));
    const std::regex entry(".* I \\[t\\] w{200}");
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        EXPECT_TRUE(std::regex_match(line, entry)) << line;
    EXPECT_EQ(count, 800);
}

}  // namespace

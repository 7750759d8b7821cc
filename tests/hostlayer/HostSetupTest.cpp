#include "HostSetup.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include "TestStore.h"
#include "VTPassword.h"
#include "VTPlatformInfo.h"

namespace {

using hostlayer::setStoreValue;
using Value = std::variant<std::string, std::int64_t>;

TEST(HostSetup, SetsOneValueAndKeepsTheRest) {
    using Texts = std::vector<std::string>;
    const Texts base = {"I", "Base"};
    const std::string dots(101, '.');
    const std::string dotted = "[I.Base]\n'" + dots + "' = \"" + dots + "\"\n";
    const struct {
        const char* before;
        Texts table;
        const char* name;
        Value value;
        const char* after;  // null: refused
    } cases[] = {
        {"# top\n[I.Base] # base\nsA = 'x' # why\nnB=2\n", base, "sA", "y",
         "# top\n[I.Base] # base\nsA = \"y\" # why\nnB=2\n"},
        {"[I.Base]\n'ключ' = 'Grüße' # ü\n", base, "ключ", Value(5L), "[I.Base]\n'ключ' = 5 # ü\n"},
        {"[I.Base]\nsA = '''\nlong\n'''\n\n[J.Base]\n", base, "sA", "short",
         "[I.Base]\nsA = \"short\"\n\n[J.Base]\n"},
        {"[I.Base]\nsA = '''\nlong\n''' # end\n\n[J.Base]\n", base, "sB", "a\"b\\c\n\t",
         "[I.Base]\nsA = '''\nlong\n''' # end\nsB = \"a\\\"b\\\\c\\u000A\\u0009\"\n\n[J.Base]\n"},
        {"[I.Base]\n[J.Base]", {"J", "Base"}, "nA", Value(-1L), "[I.Base]\n[J.Base]\nnA = -1\n"},
        {"[I.Base]\nsA = ''",
         {"I", "InstalledPackages\\803"},
         "s A",
         "x",
         "[I.Base]\nsA = ''\n\n[I.'InstalledPackages\\803']\n's A' = \"x\"\n"},
        {"[host.programs]\na = 'b'\n",
         {"host"},
         "odbcDriver",
         "FreeTDS",
         "[host.programs]\na = 'b'\n\n[host]\nodbcDriver = \"FreeTDS\"\n"},
        {"I.Base.sA = 'x'\n", base, "sA", "y", "I.Base.sA = \"y\"\n"},
        {"I = {Base = {sA = 'x'}}\n", base, "sB", "y", nullptr},
        {"I = 5\n", base, "sB", "y", nullptr},
        {"[I.Base\n", base, "sB", "y", nullptr},
        {"[I.Base]\n", base, "sB", "\xff", nullptr},
        {"[I.Base]\n", base, dots.c_str(), dots, dotted.c_str()},
        {"[I.Base]\n", {"I"}, "sB", "y", nullptr},
        {"[I.Base]\n", {"host", "Base"}, "sB", "y", nullptr},
    };
    for (const auto& set : cases) {
        const TestStore store(set.before);
        std::string problem;
        EXPECT_EQ(setStoreValue(set.table, set.name, set.value, problem), set.after != nullptr) << problem;
        EXPECT_EQ(problem.empty(), set.after != nullptr) << problem;
        EXPECT_EQ(support::readFile(store.path()), set.after != nullptr ? set.after : set.before);
    }
}

TEST(HostSetup, ReplacesTheFileAsAWhole) {
    const TestStore store("[I.Base]\n");
    const auto real = store.folder / "real.toml";
    std::filesystem::rename(store.path(), real);
    std::filesystem::create_symlink(real, store.path());
    ::chmod(real.c_str(), 0604);
    std::string problem;
    ASSERT_TRUE(setStoreValue({"I", "Base"}, "sA", "x", problem)) << problem;
    EXPECT_TRUE(std::filesystem::is_symlink(store.path()));
    struct stat status {};
    ASSERT_EQ(::stat(real.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0604U);
    constexpr uid_t kOther = 65534;
    if (::chown(real.c_str(), kOther, kOther) == 0) {  // as only root may
        ASSERT_TRUE(setStoreValue({"I", "Base"}, "sA", "x", problem)) << problem;
        ASSERT_EQ(::stat(real.c_str(), &status), 0);
        EXPECT_EQ(std::pair(status.st_uid, status.st_gid), std::pair(kOther, kOther));
    }

    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit{20, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool isSet = setStoreValue({"I", "Base"}, "sB", std::string(100, 'x'), problem);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(isSet);
    EXPECT_NE(problem.find("File too large"), std::string::npos) << problem;
    EXPECT_EQ(support::readFile(real), "[I.Base]\nsA = \"x\"\n");
    const auto files = std::filesystem::directory_iterator(store.folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 2);  // nothing is left beside the file and its link
}

TEST(HostSetup, WritersDoNotLoseEachOthersValues) {
    const TestStore store("");
    std::filesystem::remove(store.path());
    std::vector<std::thread> writers;
    for (int i = 0; i < 4; ++i) {
        writers.emplace_back([i] {
            std::string problem;
            for (int n = 0; n < 10; ++n)
                EXPECT_TRUE(
                    setStoreValue({"I", "Base"}, "n" + std::to_string(i * 10 + n), Value(1L), problem));
        });
    }
    for (std::thread& writer : writers) writer.join();
    std::map<std::string, std::string> values;
    EXPECT_NE(VTPlatformInfo("I").getRegValues("Base", &values), 0);
    EXPECT_EQ(values.size(), 40U);
}

// A writer that takes no lock: the change waits until the file is left alone. Before an endless one it gives
// up and leaves the file as it is.
TEST(HostSetup, WaitsForAWriterToEnd) {
    for (const bool isEndless : {false, true}) {
        const TestStore store("[I.Base]\n");
        std::atomic<bool> isOver{false};
        std::thread writer([&] {
            for (int i = 0; isEndless ? !isOver.load() : i < 30; ++i) {
                std::ofstream(store.path(), std::ios::app) << "#\n";
                std::this_thread::sleep_for(std::chrono::milliseconds(isEndless ? 1 : 3));
            }
        });
        std::string problem;
        const bool isSet = setStoreValue({"I", "Base"}, "sA", "x", problem);
        isOver = true;
        writer.join();
        EXPECT_TRUE(isSet || isEndless) << problem;  // a busy machine may hold the endless one up
        EXPECT_EQ(problem.find("another process keeps changing it; try again") != problem.npos, !isSet);
        EXPECT_EQ(support::readFile(store.path()).rfind("[I.Base]\nsA = \"x\"\n", 0) == 0, isSet);
    }
}

TEST(HostSetup, ReportsWhatTheStoreSays) {
    const TestStore store(
        "stray = 1\n[host]\nodbcDriver = 'FreeTDS'\nloginTimeout = 5\n"
        "[host.programs]\nsqlcmd = '/bin/x'\n[I]\nloose = 2\n[I.Base.Deep]\nx = 1\n");
    const hostlayer::StoreReport report = hostlayer::inspectStore();
    EXPECT_EQ(report.path, store.path());
    EXPECT_TRUE(report.isInForce && report.problem.empty());
    EXPECT_EQ(report.settings.at("odbcDriver") + report.settings.at("loginTimeout"), "FreeTDS5");
    EXPECT_EQ(report.programs.at("sqlcmd"), "/bin/x");
    ASSERT_EQ(report.oddities.size(), 3U);
    std::filesystem::remove(store.path());
    EXPECT_NE(hostlayer::inspectStore().problem.find("No such file"), std::string::npos);
    store.write("[I.Base]\nsA = \"x\n");
    const hostlayer::StoreReport broken = hostlayer::inspectStore();
    EXPECT_NE(broken.problem.find("line 2, column "), std::string::npos) << broken.problem;
    EXPECT_TRUE(broken.isInForce);
}

TEST(HostSetup, MakesAKeyFileOnce) {
    const TestStore store("");
    const std::string path = store.folder / "cipher.key";
    std::string problem;
    ASSERT_TRUE(hostlayer::createCipherKeyFile(path, problem)) << problem;
    const std::string key = support::readFile(path);
    EXPECT_EQ(key.size(), 32U);
    EXPECT_FALSE(hostlayer::createCipherKeyFile(path, problem));
    EXPECT_EQ(problem, "[" + path + "]: File exists");
    EXPECT_EQ(support::readFile(path), key);
    ASSERT_TRUE(setStoreValue({"host"}, "cipherKeyFile", path, problem));
    char record[128];
    unsigned long size = sizeof record;
    EXPECT_NE(VTPassword().encrypt("x", record, &size), 0);
    EXPECT_FALSE(hostlayer::createCipherKeyFile(store.folder / "none/cipher.key", problem));
}

}  // namespace

// Full disks, and others at work on the same files: nothing is left half done.
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "Installation.h"

namespace {

using support::ProgramResult;

std::string inQuotes(const std::string& word) {
    return "'" + word + "'";
}

std::vector<std::string> namesBelow(const fs::path& path) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

class Faults : public Installation {
  protected:
    // In the process of a shell that has run this command.
    ProgramResult runAfter(const std::string& command, const Words& words) const {
        std::string shell = command + "; exec " + inQuotes(TSCRIPT_PROGRAM);
        for (const std::string& word : words) shell += " " + inQuotes(word);
        support::ProgramOptions options;
        options.environment = {storeVariable()};
        return support::runProgram({"sh", "-c", shell}, options);
    }

    // In a process whose files cannot grow beyond 32 KiB: writing fails as it does on a full disk.
    ProgramResult runWithSmallFiles(const Words& words) const { return runAfter("ulimit -f 64", words); }
};

TEST_F(Faults, WhatIsForAClosedStreamStandsInNoLog) {
    pack("Spoken", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT 'a result'\n");
    const ProgramResult result = runAfter("exec >&-", {"run", "Spoken"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.errors.find("standard output cannot be written"), std::string::npos) << result.errors;
}

// A result, a package or a key for which there is no room leaves no part of itself, and what stood there
// stays.
TEST_F(Faults, NoHalfFileStaysOnAFullDisk) {
    const fs::path place = m_temp / "place";
    fs::create_directory(place);
    std::string text = "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n";
    for (int i = 0; i < 2000; ++i) text += "PRINT 'line " + std::to_string(i) + " %s'\n";
    pack("Long", text);
    const fs::path plain = m_temp / "Long.txt";
    const fs::path next = m_temp / "next.key";
    ASSERT_EQ(run({"key", "create", next}).exitCode, 0);
    fs::copy_file(folder / "Scripts" / "Long.sql", place / "old.sql");
    const std::string packed = support::readFile(place / "old.sql");
    const Words preview = {"run", "Long", "--dry-run", "-o", place / "old.sql"};
    const struct {
        Words words;
        std::string errors;
    } cases[] = {
        {{"pack", plain, "-o", place / "new.sql"}, "cannot be enciphered"},
        {{"pack", plain, "-o", place / "old.sql"}, "cannot be enciphered"},
        {{"repack", "--old-key", folder / "cipher.key", "--new-key", next, place / "old.sql"},
         "left as it is"},
        {{"run", "Long", "--dry-run", "-o", place / "old.sql"}, ""},
        {{"run", "Long", "--dry-run", "-o", place / "new.sql"}, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(joined(c.words));
        const ProgramResult result = runWithSmallFiles(c.words);
        EXPECT_EQ(result.exitCode, 3) << result.output << result.errors;
        EXPECT_NE(result.errors.find(c.errors), std::string::npos) << result.errors;
        EXPECT_EQ(namesBelow(place), std::vector<std::string>{"old.sql"});
        EXPECT_EQ(support::readFile(place / "old.sql"), packed);
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
}

// The script has run, and its result has no room.
TEST_F(Faults, AResultWithoutRoomSaysThatTheScriptHasRun) {
    pack("Wide",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT REPLICATE('\"', 7000)\n"
         "PRINT REPLICATE('\"', 7000)\nPRINT REPLICATE('\"', 7000)\n");
    const fs::path target = m_temp / "result";
    support::writeFile(target, "kept");
    const ProgramResult result = runWithSmallFiles({"run", "Wide", "--json", "-o", target});
    EXPECT_EQ(result.exitCode, 3) << result.errors;
    EXPECT_NE(result.errors.find("File too large\nThe script has run"), std::string::npos) << result.errors;
    EXPECT_EQ(support::readFile(target), "kept");
    EXPECT_NE(journal("Wide").find("1||"), std::string::npos);
}

TEST_F(Faults, ConcurrentChangesOfTheStoreAreAllKept) {
    const std::string comment = "# stays where it is\n";
    support::writeFile(store(), comment + support::readFile(store()));
    constexpr int kChanges = 12;
    const support::Descriptor quiet = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    std::vector<pid_t> writers;
    const auto write = [&](const std::string& name, const std::string& value) {
        const std::string loop = "i=0; while [ $i -lt " + std::to_string(kChanges) +
                                 " ]; do i=$((i + 1)); '" + TSCRIPT_PROGRAM "' config set " + name + " " +
                                 value + "$i || exit 1; done";
        writers.push_back(
            support::spawn({"sh", "-c", loop}, options, {quiet.get(), quiet.get(), quiet.get()}));
    };
    write("Dorvase.sDVHOSTNAME", "host");
    write("Cluster.ClusterName", "cluster");
    write("host.loginTimeout", "");
    for (int i = 0; i < kChanges; ++i)
        expectAll({{{"config", "get", "Database.sConnection"}, 0, "Dorvas\n", ""}});
    for (const pid_t writer : writers) {
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(writer, std::chrono::seconds(60), exitCode));
        EXPECT_EQ(exitCode, 0) << support::contentOf(quiet);
    }
    expectAll({{{"config", "get", "Dorvase.sDVHOSTNAME"}, 0, "host12\n", ""},
               {{"config", "get", "Cluster.ClusterName"}, 0, "cluster12\n", ""},
               {{"config", "get", "host.loginTimeout"}, 0, "12\n", ""}});
    EXPECT_EQ(support::readFile(store()).rfind(comment, 0), 0U);
    EXPECT_EQ(modeOf(store()), 0600U);
    for (const std::string& name : namesBelow(folder))
        EXPECT_EQ(name.find("registry.toml."), std::string::npos) << name;
}

// Somebody who takes no lock and writes without an end: the change waits for stillness, or is refused with
// nothing changed. Either way all values are there afterwards.
TEST_F(Faults, AStoreThatIsBeingWrittenIsWaitedFor) {
    const fs::path file = store();
    std::atomic<bool> ending{false};
    std::thread writer([&] {
        while (!ending) {
            std::ofstream(file, std::ios::app) << "#\n";
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const Words set = {"config", "set", "Cluster.ClusterName", "a"};
    const ProgramResult result = run(set);
    ending = true;
    writer.join();
    const bool refused = result.exitCode == 3;
    EXPECT_TRUE(refused || result.exitCode == 0) << result.errors;
    EXPECT_EQ(result.errors.find("another process keeps changing it; try again") != std::string::npos,
              refused);
    EXPECT_EQ(support::readFile(file).find("ClusterName") == std::string::npos, refused);
    expectAll({{{"config", "get", "Database.sNQ2CONNECTION"}, 0, "NQ2\n", ""},
               {set, 0, "", "set Instance001.Cluster"},
               {{"config", "get", "Cluster.ClusterName"}, 0, "a\n", ""}});
}

// Two starts of one sandbox at a time make one server; what a broken-off start left is made anew.
TEST_F(Faults, ASandboxIsMadeOnceAndWhole) {
    const fs::path other = m_temp / "other";
    const support::Descriptor quiet = support::memoryFile();
    std::vector<pid_t> starts;
    for (int i = 0; i < 3; ++i)
        starts.push_back(support::spawn({TSCRIPT_PROGRAM, "sandbox", "up", "--dir", other}, {},
                                        {quiet.get(), quiet.get(), quiet.get()}));
    for (const pid_t start : starts) {
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(start, std::chrono::seconds(60), exitCode));
        EXPECT_EQ(exitCode, 0) << support::contentOf(quiet);
    }
    const pid_t server = serverOf(other);
    support::writeFile(other / ".tscript-sandbox", "unfinished\n");
    fs::remove(other / "registry.toml");
    expectAll({{{"sandbox", "up", "--dir", other}, 0, "export", "running on"},
               {{"--store", other / "registry.toml", "run", "SiteInventory"}, 0, "Zürich", ""}});
    EXPECT_NE(serverOf(other), server);
    expectAll({{{"sandbox", "down", "--dir", other}, 0, "", "stopped"}});
}

// A signal to the tool alone, as a service manager sends it, is passed on.
TEST_F(Faults, AStoppedRunIsClosed) {
    packEndless();
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t pid = support::spawn({TSCRIPT_PROGRAM, "run", "Endless"}, options,
                                         {support::memoryFile().get(), output.get(), output.get()});
        while (journal("Endless").find("0||") == std::string::npos) std::this_thread::yield();
        kill(pid, signal);
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
        EXPECT_EQ(exitCode, 130) << support::contentOf(output);
        EXPECT_NE(journal("Endless").find("2||"), std::string::npos);
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
}

// The plain copy that a look at a package takes goes as well. Of a pipe's, nothing is read before the signal.
TEST_F(Faults, AnInterruptedLookLeavesNoPlainCopy) {
    const fs::path package = folder / "Scripts" / "Piped.sql";
    ASSERT_EQ(mkfifo(package.c_str(), 0600), 0);
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    for (const Words& look : {Words{"run", "Piped", "--dry-run"}, Words{"which", "Piped"}}) {
        Words command = {TSCRIPT_PROGRAM};
        command.insert(command.end(), look.begin(), look.end());
        const pid_t pid =
            support::spawn(command, options, {support::memoryFile().get(), output.get(), output.get()});
        {
            const std::ofstream writer(package);  // opens once the other end is open
            EXPECT_FALSE(fs::is_empty(folder / "temp"));
            kill(pid, SIGINT);
        }
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
        EXPECT_EQ(exitCode, 130) << support::contentOf(output);
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
}

// The query tool does not go on behind a command that was stopped: it waits for a pipe that nobody fills.
TEST_F(Faults, AStoppedRestoreEndsTheQueryTool) {
    const fs::path backup = folder / "backups" / "pipe";
    ASSERT_EQ(mkfifo(backup.c_str(), 0600), 0);
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t pid = support::spawn({TSCRIPT_PROGRAM, "db", "restore", backup, "copy"}, options,
                                     {support::memoryFile().get(), output.get(), output.get()});
    const std::ofstream writer(backup);  // opens once the server reads
    kill(pid, SIGTERM);
    int exitCode = -1;
    EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
    EXPECT_EQ(exitCode, 130) << support::contentOf(output);
}

}  // namespace

// Full disks, concurrent starts and killed runs: nothing is left half done.
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <fstream>
#include <thread>

#include "Faults.h"

namespace {

using support::ProgramResult;

std::vector<std::string> namesBelow(const fs::path& path) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// Standard output that nobody can receive, and pipes as result files. The run itself ends as always.
TEST_F(Faults, ALostOutputIsAFailureAndTheRowIsClosed) {
    packBody("Spoken",
             "DECLARE @i int = 0\n"
             "WHILE @i < 3000 BEGIN PRINT REPLICATE('a result ', 10) SET @i = @i + 1 END\n");
    const std::string pipe = inQuotes(m_temp / "pipe");
    const std::string copy = m_temp / "copy";
    const std::string lost = "standard output cannot be written";
    const struct {
        std::string before;
        Words options;
        int exitCode;
        std::string errors;
    } cases[] = {{"exec >&-", {}, 3, lost},
                 {"exec >/dev/full", {}, 3, lost},
                 {"mkfifo " + pipe + "; exec 3<>" + pipe + " >" + pipe + " 3<&-", {}, 3, lost},
                 {"{ head -c 1 " + pipe + " >/dev/null & }", {"-o", m_temp / "pipe"}, 3, "Broken pipe"},
                 {"{ cat " + pipe + " >" + inQuotes(copy) + " & }", {"-o", m_temp / "pipe"}, 0, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.before);
        const std::string before = journal("Spoken");
        Words words = {"run", "Spoken"};
        words.insert(words.end(), c.options.begin(), c.options.end());
        const ProgramResult result = runAfter(c.before, words);
        EXPECT_EQ(result.exitCode, c.exitCode) << result.errors;
        EXPECT_NE(result.errors.find(c.errors), std::string::npos) << result.errors;
        const std::string after = journal("Spoken");
        EXPECT_TRUE(after.size() > before.size() && after.find("0||") == after.npos) << after;
    }
    EXPECT_EQ(runAfter("exec >/dev/full", {"run", "--help"}).exitCode, 3);
    const fs::path signer = m_temp / "signer.key";
    EXPECT_EQ(runAfter("exec >/dev/full", {"key", "create", "--signing", signer}).exitCode, 3);
    EXPECT_FALSE(fs::exists(signer)) << "its public key has not been printed";
    const auto withSmallDisk = [&](const std::string& blocks, const std::string& words) {
        const std::string run = inQuotes(TSCRIPT_PROGRAM) + " " + words;
        return runAfter("(ulimit -f " + blocks + "; " + run + ") 2>&1 | cat; exit", {}).output;
    };
#ifndef __SANITIZE_THREAD__  // its runtime writes a file of its own
    EXPECT_NE(withSmallDisk("0", "each --stores " + inQuotes(store()) + " -- run None").find("are lost: "),
              std::string::npos);
#endif
    const std::string backup = "db backup dorvas /" + std::string(800, 'x') + " --verify";
    EXPECT_NE(withSmallDisk("1", backup).find("cannot be written: File too large"), std::string::npos)
        << withSmallDisk("1", backup);
    for (const Words& words :
         {Words{"lint", "/proc/self/mem"}, Words{"diff", "/proc/self/mem", "/proc/self/mem"}})
        EXPECT_NE(run(words).errors.find("/proc/self/mem cannot be read to its end"), std::string::npos);
    while (support::readFile(copy).find("Succeeded") == std::string::npos) std::this_thread::yield();
}

// A package or a result that does not fit on the disk leaves no part of itself, and an existing file stays.
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
    const std::pair<Words, std::string> cases[] = {
        {{"pack", plain, "-o", place / "new.sql"}, "cannot be encrypted"},
        {{"pack", plain, "-o", place / "old.sql"}, "cannot be encrypted"},
        {{"repack", "--old-key", folder / "cipher.key", "--new-key", next, place / "old.sql"},
         "left as it is"},
        {{"run", "Long", "--dry-run", "-o", place / "old.sql"}, ""},
        {{"run", "Long", "--dry-run", "-o", place / "new.sql"}, ""},
    };
    for (const auto& [words, errors] : cases) {
        SCOPED_TRACE(joined(words));
        const ProgramResult result = runWithSmallFiles(words);
        EXPECT_EQ(result.exitCode, 3) << result.output << result.errors;
        EXPECT_NE(result.errors.find(errors), std::string::npos) << result.errors;
        EXPECT_EQ(namesBelow(place), std::vector<std::string>{"old.sql"});
        EXPECT_EQ(support::readFile(place / "old.sql"), packed);
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
}

// Simultaneous starts of one sandbox make one server; what an interrupted start left is made anew.
TEST_F(Faults, ASandboxIsMadeOnceAndWhole) {
    const fs::path other = m_temp / "other";
    const Words up = {"sandbox", "up", "--dir", other};
    const Background starts[] = {{up, {}}, {up, {}}, {up, {}}};
    for (const Background& each : starts) EXPECT_EQ(each.end(), 0) << each.output();
    const pid_t server = serverOf(other);
    support::writeFile(other / ".tscript-sandbox", "unfinished\n");
    fs::remove(other / "registry.toml");
    expectAll({{{"sandbox", "up", "--dir", other}, 0, "export", "running on"},
               {{"--store", other / "registry.toml", "run", "SiteInventory"}, 0, "Zürich", ""}});
    EXPECT_NE(serverOf(other), server);
    expectAll({{{"sandbox", "down", "--dir", other}, 0, "", "stopped"}});
}

// First runs of a package at the same time add one row to the catalogue.
TEST_F(Faults, FirstRunsAddOneRow) {
    packBody("New", "PRINT 'x'\n");
    const Words first = {"run", "New"};
    const Background runs[] = {start(first), start(first), start(first), start(first)};
    for (const Background& each : runs) EXPECT_EQ(each.end(), 0) << each.output();
    const std::string rows = run({"catalogue", "--name", "New"}).output;
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 1) << rows;
}

// A signal to the tool alone, as a service manager sends it, is passed on.
TEST_F(Faults, AStoppedRunIsClosed) {
    packEndless();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        expectInterrupted({"run", "Endless"}, signal, [&] {
            while (journal("Endless").find("0||") == std::string::npos) std::this_thread::yield();
            return std::ofstream();
        });
        EXPECT_NE(journal("Endless").find("2||"), std::string::npos);
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
    expectInterrupted({"each", "--stores", store(), "--", "run", "Endless"}, SIGTERM, [&] {
        while (journal("Endless").find("0||") == std::string::npos) std::this_thread::yield();
        return std::ofstream();
    });
    EXPECT_EQ(journal("Endless").find("0||"), std::string::npos);
}

// A killed run leaves its SQL file, its output file and its row, and nothing else. A file that a run left on
// purpose has no mark.
TEST_F(Faults, AKilledRunIsTidiedUp) {
    packEndless();
    const Background killed = start({"run", "Endless"});
    std::vector<fs::path> left;
    const auto outputFiles = [&] {
        left.clear();
        for (const fs::path& place : {folder / "temp", folder / "logs"})
            for (const auto& entry : fs::directory_iterator(place))
                if (entry.path().extension() == ".sql" ||
                    entry.path().filename().string().rfind("Tscript_", 0) == 0)
                    left.push_back(entry.path());
        return left.size();
    };
    while (journal("Endless").find("0||") == std::string::npos || outputFiles() < 2)
        std::this_thread::yield();
    const auto setAge = [&](std::chrono::minutes age) {
        for (const fs::path& file : left) fs::last_write_time(file, fs::file_time_type::clock::now() - age);
    };
    const std::string id = run({"journal", "--name", "Endless"}).output.substr(0, 1);
    setAge(std::chrono::minutes(2));
    expectAll({{{"tidy", "--yes"}, 0, "", "no files of dead runs"},  // it still runs
               {{"journal", "close", id}, 2, "", "is not abandoned"},
               {{"journal", "close", "999"}, 2, "", "the journal has no run 999"}});
    kill(-killed.pid(), SIGKILL);
    killed.end();
    EXPECT_EQ(namesBelow(folder / "temp").size(), 1U) << "the SQL file alone";
    const fs::path kept = folder / "temp" / "Kept_1_1_1.sql";
    support::writeFile(kept, "PRINT 1\n");
    left.push_back(kept);
    setAge(std::chrono::minutes(0));
    expectAll({{{"tidy", "--yes"}, 0, "", "no files of dead runs"}});  // they are young
    setAge(std::chrono::minutes(2));
    expectAll({{{"doctor"}, 0, "warning  files of dead runs: 2, the first is ", ""},
               {{"tidy", "--dry-run"}, 0, "Endless", ""},
               {{"tidy"}, 2, "Endless", "--yes"},
               {{"tidy", "--yes"}, 0, "Endless", "deleted 2 file(s)"}});
    EXPECT_EQ(namesBelow(folder / "temp"), std::vector<std::string>{"Kept_1_1_1.sql"});
    const Words close = {"journal", "close", id, "--remark", "the host's power failed"};
    Words closeNow = close;
    closeNow.insert(closeNow.end(), {"--stale", "0"});
    expectAll({{close, 2, "", "is not abandoned"},
               {closeNow, 0, "", "closed run " + id + " of Dorvas as failed"},
               {closeNow, 2, "", "has ended"}});
    EXPECT_NE(journal("Endless").find("2| [the host's power failed]|"), std::string::npos);
}

// A row whose end is recorded between the check and the change is not closed.
TEST_F(Faults, ARunThatEndsMeanwhileKeepsItsEnd) {
    packBody(
        "Ending",
        "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, userId) VALUES\n"
        "(1, 4, 'Old', dbo.GetDateTime(1700000000), dbo.GetDateTime(1700000000), 0, '', 0)\nGO\n"
        "BEGIN TRANSACTION UPDATE ZpTscriptExec SET status = 1 WHERE name = 'Old' PRINT 'held'\nGO\n"
        "WAITFOR DELAY '00:00:02' COMMIT\n");
    const Background ending = start({"run", "Ending", "--follow"});
    while (ending.output().find("held") == std::string::npos) std::this_thread::yield();
    expectAll({{{"journal", "close", "2"}, 2, "", "run 2 has ended meanwhile"}});
    EXPECT_EQ(ending.end(), 0) << ending.output();
}

// A run opens nothing but a regular file with one name, and never waits for a pipe.
TEST_F(Faults, APackageIsARegularFileWithOneName) {
    const fs::path scripts = folder / "Scripts";
    const fs::path outside = m_temp / "outside.sql";
    fs::copy_file(scripts / "SiteInventory.sql", outside);
    ASSERT_EQ(mkfifo((scripts / "Piped.sql").c_str(), 0600), 0);
    fs::create_symlink(outside, scripts / "Linked.sql");
    fs::create_hard_link(outside, scripts / "Named.sql");
    for (const char* name : {"Piped", "Linked", "Named"}) {
        expectAll({{{"run", name}, 3, "", "is a link, no regular file, or a file with a second name"},
                   {{"run", name, "--dry-run"}, 3, "", ""},
                   {{"doctor"}, 3, std::string("FAILED   package ") + name + ": is a link", ""}});
        fs::remove(scripts / (std::string(name) + ".sql"));
    }
    fs::permissions(scripts / "SiteInventory.sql", fs::perms::others_write, fs::perm_options::add);
    expectAll({{{"doctor"}, 3, "FAILED   package SiteInventory: can be changed by every user", ""}});
}

TEST_F(Faults, WhatEveryUserCanChangeIsRefused) {
    const fs::path tool = m_temp / "sqlcmd";
    fs::copy_file(fs::path(TSCRIPT_PROGRAM).parent_path() / "sqlcmd", tool);
    run({"config", "set", "host.programs.sqlcmd", tool});
    for (const fs::path& path :
         {fs::path(store()), folder / "tls-cert.pem", folder / "Scripts/SiteInventory.sql", tool}) {
        const fs::perms before = fs::status(path).permissions();
        fs::permissions(path, fs::perms::others_write, fs::perm_options::add);
        expectAll({{{"run", "SiteInventory"}, 3, "", "every user can change " + path.string()},
                   {{"doctor"}, 3, "every user", ""}});
        fs::permissions(path, before);
    }

    for (const fs::path& path : {folder, folder / "Scripts", folder / "temp", folder / "logs"}) {
        const fs::perms before = fs::status(path).permissions();
        fs::permissions(path, fs::perms::all);
        expectAll({{{"run", "SiteInventory"}, 3, "", "every user can replace files in " + path.string()},
                   {{"doctor"}, 3, "every user can", ""}});
        fs::permissions(path, fs::perms::all | fs::perms::sticky_bit);
        expectAll({{{"run", "SiteInventory", "--dry-run"}, 0, "", ""}});
        fs::permissions(path, before);
    }
}

// Both keys count until all is converted, and a rotation that was cut off is completed by the next.
TEST_F(Faults, ARotationMayBeKilledAtAnyMoment) {
    const Words works = {"run", "SiteInventory"};
    const fs::path package = folder / "Scripts" / "SiteInventory.sql";
    const std::string withOldKey = support::readFile(package);
    const auto killRotation = [](const Background& rotation) {
        kill(rotation.pid(), SIGKILL);
        rotation.end();
    };
    const Background waiting = start({"rotate", "--grace", "3600"});
    while (support::readFile(store()).find("previousKeyFile") == std::string::npos ||
           support::readFile(package) == withOldKey)
        std::this_thread::yield();
    expectAll({{works, 0, "", ""}, {{"rotate"}, 3, "", "another tscript is rotating"}});
    killRotation(waiting);
    support::writeFile(package, withOldKey);
    expectAll({{works, 0, "", ""},
               {{"doctor"}, 0, "warning  key rotation: not complete", ""},
               {{"rotate", "--grace", "0"}, 0, "", "completed the rotation to the key"},
               {{"doctor"}, 0, "ok       key: " + (folder / "cipher.key.1").string(), ""}});
    for (int i = 0; i < 6; ++i) {
        const Background killed = start({"rotate", "--grace", "0"});
        std::this_thread::sleep_for(std::chrono::milliseconds(i * 15));
        killRotation(killed);
        expectAll({{works, 0, "", ""}, {{"credentials", "test", "Dorvas"}, 0, "", ""}});
    }
    support::writeFile(folder / "Scripts" / "Foreign.sql", "no record\n");
    const std::string notes = run({"rotate", "--grace", "0"}).errors;
    EXPECT_NE(notes.find("is not used any more"), std::string::npos) << notes;
    EXPECT_EQ(notes.find("Foreign.sql: line 1: "), notes.rfind("Foreign.sql")) << notes;
    expectAll({{works, 0, "", ""}});
    EXPECT_EQ(run({"doctor"}).output.find("key rotation"), std::string::npos);
    support::writeFile(package, withOldKey);
    expectAll({{works, 3, "", "encrypted with another key"}});
}

// Ignoring SIGCHLD is inherited: the exit codes of the query tool would be lost.
TEST_F(Faults, ACallerMayIgnoreItsChildren) {
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    for (const Words& command : {Words{"run", "SiteInventory"}, {"doctor"}}) {
        Words words = {"env", "--ignore-signal=CHLD", TSCRIPT_PROGRAM};
        words.insert(words.end(), command.begin(), command.end());
        const ProgramResult result = support::runProgram(words, options);
        EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    }
}

// At whatever moment of its server's start, too.
TEST(CommandLine, AnInterruptedPackageTestLeavesNothing) {
    const support::TempDir temp;
    const fs::path package = fs::path(TSCRIPT_PROGRAM).parent_path() /
                             "../share/dvutilities/installation/packages/SiteInventory.txt";
    const auto isServed = [&] {
        for (const auto& process : fs::directory_iterator("/proc")) {
            std::ifstream words(process.path() / "cmdline");
            const std::string text(std::istreambuf_iterator<char>(words), {});
            if (text.find(temp.path().string() + "/") != std::string::npos) return true;
        }
        return false;
    };
    for (const int milliseconds : {0, 30, 300}) {
        const Background test({"test", package}, {"TMPDIR=" + temp.path().string()});
        while (!isServed()) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        kill(test.pid(), SIGINT);
        EXPECT_EQ(test.end(), 130) << test.output();
        EXPECT_FALSE(isServed());
        EXPECT_TRUE(fs::is_empty(temp.path()));
    }
}

// The server frees the lock of a run that is killed.
TEST_F(Faults, OneRunAtATimeHoldsTheLock) {
    packEndless();
    packBody("ENDLESS", "PRINT 'of the same name for the server'\n");
    const Background holder = start({"run", "Endless", "--lock"});
    while (journal("Endless").find("0||") == std::string::npos) std::this_thread::yield();
    expectAll({{{"run", "Endless", "--lock=fail"}, 5, "", "Endless is locked by run "},
               {{"run", "ENDLESS", "--lock=fail"}, 5, "", "ENDLESS is locked by run "},
               {{"run", "Endless", "--lock", "--timeout", "1"}, 5, "", "; waiting"}});
    replaceInFile(store(), "loginTimeout   = 15", "loginTimeout   = 15\nlockedScripts = 'Other, end*'");
    expectAll({{{"run", "Endless", "--timeout", "1"}, 5, "", "given up"}});
    kill(holder.pid(), SIGKILL);
    holder.end();
    expectAll({{{"run", "Endless", "--timeout", "2"}, 1, "", "after 2 s (--timeout)"}});
    EXPECT_NE(journal("Endless").find("2||"), std::string::npos);
}

TEST_F(Faults, SixtyFourProcessesRunOnePackageSideBySide) {
    constexpr int kRuns = 64;
    packBody("Many", "PRINT 'run %s.'\n");
    std::deque<Background> runs;
    for (int i = 0; i < kRuns; ++i)
        runs.emplace_back(Words{"run", "Many", "-q", "-p", std::to_string(i)}, Words{storeVariable()});
    for (const Background& run : runs) EXPECT_EQ(run.end(), 0) << run.output();
    const std::string rows = "\n" + journal("Many");
    const std::string log = support::readFile(folder / "logs" / "ZephraDebug.log");
    for (int i = 0; i < kRuns; ++i) {
        const std::string value = std::to_string(i);
        EXPECT_NE(rows.find("\n1|" + value + "|"), std::string::npos) << value;
        EXPECT_NE(log.find("run " + value + ".\n"), std::string::npos) << value;
    }
}

}  // namespace

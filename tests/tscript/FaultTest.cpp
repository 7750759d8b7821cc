// Full disks, concurrent starts and signals: nothing is left half done.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <thread>

#include "Installation.h"
#include "Proxy.h"
#include "SampleInstallation.h"
#include "TsqlBox.h"

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

    // Starts a command, and sends it the signal once `waitUntilAtWork` has returned; its file is closed then.
    void expectInterrupted(Words command, int signal,
                           const std::function<std::ofstream()>& waitUntilAtWork) const {
        command.insert(command.begin(), TSCRIPT_PROGRAM);
        const support::Descriptor output = support::memoryFile();
        const support::Descriptor input = support::memoryFile();
        support::ProgramOptions options;
        options.environment = {storeVariable()};
        const pid_t pid = support::spawn(command, options, {input.get(), output.get(), output.get()});
        {
            const std::ofstream held = waitUntilAtWork();
            kill(pid, signal);
        }
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
        EXPECT_EQ(exitCode, 130) << support::contentOf(output);
    }

    // In a process whose files cannot grow beyond 32 KiB: writing fails as it does on a full disk.
    ProgramResult runWithSmallFiles(const Words& words) const { return runAfter("ulimit -f 64", words); }
};

// Standard output that nobody can receive, and pipes as result files. The run itself ends as always.
TEST_F(Faults, ALostOutputIsAFailureAndTheRowIsClosed) {
    pack("Spoken",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nDECLARE @i int = 0\n"
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
    const struct {
        Words words;
        std::string errors;
    } cases[] = {
        {{"pack", plain, "-o", place / "new.sql"}, "cannot be encrypted"},
        {{"pack", plain, "-o", place / "old.sql"}, "cannot be encrypted"},
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

// Simultaneous starts of one sandbox make one server; what an interrupted start left is made anew.
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

// First runs of a package at the same time add one row to the catalogue.
TEST_F(Faults, FirstRunsAddOneRow) {
    pack("New", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT 'x'\n");
    const support::Descriptor quiet = support::memoryFile();
    std::vector<pid_t> runs;
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    for (int i = 0; i < 4; ++i)
        runs.push_back(support::spawn({TSCRIPT_PROGRAM, "run", "New"}, options,
                                      {quiet.get(), quiet.get(), quiet.get()}));
    for (const pid_t pid : runs) {
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
        EXPECT_EQ(exitCode, 0) << support::contentOf(quiet);
    }
    const std::string rows = run({"catalogue", "--name", "New"}).output;
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 1) << rows;
}

// Both connections verify the server. With each reason to refuse it, neither connects, and nothing runs.
TEST_F(Faults, RefusedServersAreNamed) {
    const support::Certificates certificates;
    const std::string before = journal("SiteInventory");
    const std::string intact = support::readFile(store());
    const fs::path noOldTls = m_temp / "gnutls.conf";
    support::writeFile(noOldTls, "[overrides]\ndisabled-version = tls1.1\n");
    const support::NetworkFault inTheHandshake{.kind = support::NetworkFault::kClose, .after = 100};
    const struct {
        std::string certificate, reason;
        std::string newestTls = "1.2";
        support::NetworkFault fault = {};
    } cases[] = {{"unknown", "certificate is from an unknown authority (/CN=unknown)"},
                 {"other-host", "certificate is for db.example.org, not for localhost"},
                 {"expired", "certificate has expired on 2021-01-01"},
                 {"early", "certificate is not valid before 2047-01-01"},
                 {"", "the server does not support encryption"},
                 {"good", "the server does not support TLS 1.2 or later", "1.1"},
                 {"good", "instead of sending its part of the TLS handshake", "1.2", inTheHandshake}};
    for (const auto& c : cases) {
        const support::TsqlBox box(c.certificate.empty()
                                       ? Words()
                                       : certificates.options(c.certificate, {"--tls-max", c.newestTls}));
        const support::Proxy proxy(box.port(), c.fault);
        replaceInFile(store(), (folder / "tls-cert.pem").string(), certificates.file("ca.pem"));
        expectAll({{{"config", "set", "Database.sINSTANCE", "localhost," + std::to_string(proxy.port())},
                    0,
                    "",
                    ""}});
        for (const Words& command : {Words{"run", "SiteInventory"}, {"db", "list"}}) {
            const ProgramResult result =
                runAfter("export GNUTLS_SYSTEM_PRIORITY_FILE=" + inQuotes(noOldTls), command);
            EXPECT_EQ(result.exitCode, 4) << joined(command) << result.errors;
            EXPECT_NE((result.output + result.errors).find(c.reason), std::string::npos)
                << joined(command) << result.output << result.errors;
        }
        support::writeFile(store(), intact);
    }
    EXPECT_EQ(journal("SiteInventory"), before);
    EXPECT_EQ(run({"run", "SiteInventory"}).exitCode, 0);
}

// A login that is not encrypted is accepted at a loopback address only. 0.0.0.0 is none, but connects to this
// host.
TEST_F(Faults, AnUnencryptedLoginToAnotherAddressIsFound) {
    const support::TsqlBox box;
    replaceInFile(store(), "\"verify\"", "\"off\"");
    for (const auto& [host, finding] :
         {std::pair<std::string, const char*>("0.0.0.0",
                                              "FAILED   Dorvas encryption: none: the password crosses"),
          {"127.0.0.1", "ok       Dorvas encryption: none; the server is on this host"}}) {
        expectAll(
            {{{"config", "set", "Database.sINSTANCE", host + "," + std::to_string(box.port())}, 0, "", ""}});
        EXPECT_NE(run({"doctor"}).output.find(finding), std::string::npos) << run({"doctor"}).output;
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their libraries must be loaded first
// The first address of the server's name refuses connections, and then drops all packets.
TEST_F(Faults, ANameMayHaveADeadAddress) {
    const fs::path hosts = m_temp / "hosts";
    support::writeFile(hosts, "127.0.0.2 several.test\n127.0.0.1 several.test\n");
    const std::string server = support::readFile(store());
    const int port = std::stoi(server.substr(server.find("127.0.0.1,") + 10));
    replaceInFile(store(), "\"verify\"", "\"require\"");
    expectAll({{{"config", "set", "Database.sINSTANCE", "several.test," + std::to_string(port)}, 0, "", ""}});
    const std::string useHosts = "export LD_PRELOAD=libnss_wrapper.so NSS_WRAPPER_HOSTS=" + inQuotes(hosts);
    support::Descriptor silent;
    for (const bool isSilent : {false, true}) {
        if (isSilent) silent = support::silentPort("127.0.0.2", port);
        for (const Words& command : {Words{"run", "SiteInventory"}, {"db", "list"}}) {
            const ProgramResult result = runAfter(useHosts, command);
            EXPECT_EQ(result.exitCode, 0) << joined(command) << result.output << result.errors;
        }
    }
}
#endif

// A server that is killed during a run is a lost connection, and the journal's row stays open.
TEST_F(Faults, AKilledServerIsNamed) {
    pack("Wait",
         "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT 'x'\nGO\nWAITFOR DELAY '00:01:00'\n");
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t pid =
        support::spawn({TSCRIPT_PROGRAM, "run", "Wait"}, options, {output.get(), output.get(), output.get()});
    while (journal("Wait").find("0||") == std::string::npos) std::this_thread::yield();
    kill(serverOf(folder), SIGKILL);
    int exitCode = -1;
    EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
    const std::string text = support::contentOf(output);
    EXPECT_EQ(exitCode, 4) << text;
    for (const char* part : {"the connection to the server failed during the run", "the run stays open"})
        EXPECT_NE(text.find(part), std::string::npos) << text;
}

// A connection that is lost during a run is the cause of its failure. The journal's row is closed over a new
// connection; if there is none, the row stays open, and the report says so.
TEST_F(Faults, ALostConnectionIsNamedAndTheRowClosedOrReported) {
    using support::NetworkFault;
    const std::string start = "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n";
    pack("Rows",
         start + "DECLARE @i int = 0 WHILE @i < 3000 BEGIN SELECT REPLICATE('r', 200) SET @i = @i + 1 END\n");
    pack("Wait", start + "PRINT 'begun'\nGO\nWAITFOR DELAY '00:01:00'\n");
    const auto hasBegun = [&] {  // by the output of the query tool
        for (const fs::path& place : {folder / "temp", folder / "logs"})
            for (const auto& entry : fs::directory_iterator(place)) {
                std::ifstream in(entry.path());
                const std::string text(std::istreambuf_iterator<char>(in), {});
                if (entry.path().filename().string().rfind("Tscript_", 0) == 0 &&
                    text.find("begun") != std::string::npos)
                    return true;
            }
        return false;
    };
    const std::string server = support::readFile(store());
    const std::size_t comma = server.find("127.0.0.1,");
    support::Proxy proxy(std::stoi(server.substr(comma + 10)));
    expectAll(
        {{{"config", "set", "Database.sINSTANCE", "127.0.0.1," + std::to_string(proxy.port())}, 0, "", ""},
         {{"config", "set", "host.networkTimeout", "2"}, 0, "", ""}});
    const struct {
        std::string script;
        std::function<void()> breakNetwork;
        std::string row, report;
        std::string driver = {};  // of the query tool
    } cases[] = {
        {"Rows", [] {}, "2||", "the connection to the server failed during the run"},
        {"Wait", [&] { proxy.resetConnections(); }, "2||",
         "the connection to the server failed during the run"},
        {"Wait", [&] { proxy.resetConnections(); }, "2||",
         "the connection to the server failed during the run", "FreeTDS"},
        {"Wait", [&] { proxy.losePackets(); }, "2||", "the connection to the server failed during the run"},
        // The server may record the end although its answer is lost.
        {"Wait", [&] { proxy.setFault({.kind = NetworkFault::kReset}); }, "||", "the run stays open"}};
    for (const auto& c : cases) {
        constexpr std::size_t kInTheRows = std::size_t{200} << 10;
        proxy.setFault({.kind = NetworkFault::kReset, .after = kInTheRows});
        const std::string before = journal(c.script);
        const support::Descriptor output = support::memoryFile();
        support::ProgramOptions options;
        options.environment = {storeVariable(), "SQLCMD_ODBC_DRIVER=" + c.driver};
        const pid_t pid = support::spawn({TSCRIPT_PROGRAM, "run", c.script}, options,
                                         {output.get(), output.get(), output.get()});
        while (journal(c.script).size() == before.size()) std::this_thread::yield();
        const auto latest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (c.script == "Wait" && !hasBegun() && std::chrono::steady_clock::now() < latest)
            std::this_thread::yield();
        c.breakNetwork();
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
        proxy.setFault({});
        const std::string text = support::contentOf(output);
        EXPECT_EQ(exitCode, 4) << text;
        EXPECT_NE(text.find(c.report), std::string::npos) << text;
        EXPECT_NE(journal(c.script).find(c.row), std::string::npos) << text;
    }
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

// Signals end a run also while it waits for a server that does not answer, during the login and before the
// query tool starts; a second one ends the wait for the journal.
TEST_F(Faults, ASignalEndsEveryWaitForTheServer) {
    packEndless();
    const auto stopServer = [this] { kill(serverOf(folder), SIGSTOP); };
    const auto waitUntilConnected = [] { std::this_thread::sleep_for(std::chrono::seconds(1)); };
    const auto runsAgain = [this] {
        kill(serverOf(folder), SIGCONT);
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    };
    expectInterrupted({"run", "Endless"}, SIGTERM, [&] {
        stopServer();
        waitUntilConnected();
        return std::ofstream();
    });
    runsAgain();

    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t pid = support::spawn({TSCRIPT_PROGRAM, "run", "Endless"}, options,
                                     {output.get(), output.get(), output.get()});
    while (journal("Endless").find("0||") == std::string::npos) std::this_thread::yield();
    stopServer();
    kill(pid, SIGINT);
    waitUntilConnected();
    kill(pid, SIGINT);
    int exitCode = -1;
    EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
    EXPECT_EQ(exitCode, 130) << support::contentOf(output);
    EXPECT_NE(support::contentOf(output).find("its end is not recorded"), std::string::npos)
        << support::contentOf(output);
    runsAgain();
}

// The journal's statement waits for a lock that another run holds.
TEST_F(Faults, AQueryTimeoutIsNamed) {
    pack("Hold",
         "#START_OPTIONS#\nDatabase Name:NQ2\n#START_SCRIPT#\nUSE dorvas\nGO\nBEGIN TRANSACTION\n"
         "UPDATE ZpTscriptExec SET status = status\nWAITFOR DELAY '00:01:00'\n");
    replaceInFile(store(), "loginTimeout   = 15", "loginTimeout   = 15\nqueryTimeout = 1");
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t holder =
        support::spawn({TSCRIPT_PROGRAM, "run", "Hold"}, options, {output.get(), output.get(), output.get()});
    while (run({"journal", "--db", "NQ2", "--name", "Hold"}).output.find("running") == std::string::npos)
        std::this_thread::yield();
    const ProgramResult result = run({"run", "SiteInventory"});
    EXPECT_EQ(result.exitCode, 4) << result.output;
    EXPECT_NE(result.errors.find("HYT00"), std::string::npos) << result.errors;
    kill(holder, SIGTERM);
    int exitCode = -1;
    EXPECT_TRUE(support::waitFor(holder, std::chrono::seconds(60), exitCode));
}

// A killed run leaves its SQL file, its output file and its row, and nothing else. A file that a run left on
// purpose has no mark.
TEST_F(Faults, AKilledRunIsTidiedUp) {
    packEndless();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const support::Descriptor output = support::memoryFile();
    const pid_t pid = support::spawn({TSCRIPT_PROGRAM, "run", "Endless"}, options,
                                     {output.get(), output.get(), output.get()});
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
    kill(-pid, SIGKILL);
    int exitCode = -1;
    EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
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
    const support::Descriptor output = support::memoryFile();
    const auto startRotation = [&](const char* grace) {
        support::ProgramOptions options;
        options.environment = {storeVariable()};
        return support::spawn({TSCRIPT_PROGRAM, "rotate", "--grace", grace}, options,
                              {output.get(), output.get(), output.get()});
    };
    const auto killRotation = [](pid_t pid) {
        kill(pid, SIGKILL);
        int exitCode = -1;
        support::waitFor(pid, std::chrono::seconds(60), exitCode);
    };
    const pid_t waiting = startRotation("3600");
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
        const pid_t killed = startRotation("0");
        std::this_thread::sleep_for(std::chrono::milliseconds(i * 15));
        killRotation(killed);
        expectAll({{works, 0, "", ""}, {{"credentials", "test", "Dorvas"}, 0, "", ""}});
    }
    expectAll({{{"rotate", "--grace", "0"}, 0, "", "is not used any more"}, {works, 0, "", ""}});
    EXPECT_EQ(run({"doctor"}).output.find("key rotation"), std::string::npos);
    support::writeFile(package, withOldKey);
    expectAll({{works, 3, "", "encrypted with another key"}});
}

// The server frees the lock of a run that is killed.
TEST_F(Faults, OneRunAtATimeHoldsTheLock) {
    packEndless();
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t holder = support::spawn({TSCRIPT_PROGRAM, "run", "Endless", "--lock"}, options,
                                        {output.get(), output.get(), output.get()});
    while (journal("Endless").find("0||") == std::string::npos) std::this_thread::yield();
    expectAll({{{"run", "Endless", "--lock=fail"}, 5, "", "Endless is locked by run "},
               {{"run", "Endless", "--lock", "--timeout", "1"}, 5, "", "; waiting"}});
    replaceInFile(store(), "loginTimeout   = 15", "loginTimeout   = 15\nlockedScripts = 'Other, End*'");
    expectAll({{{"run", "Endless", "--timeout", "1"}, 5, "", "given up"}});
    kill(holder, SIGKILL);
    int exitCode = -1;
    support::waitFor(holder, std::chrono::seconds(60), exitCode);
    expectAll({{{"run", "Endless", "--timeout", "2"}, 1, "", "after 2 s (--timeout)"}});
    EXPECT_NE(journal("Endless").find("2||"), std::string::npos);
}

// The journal is in another database than the table for which one script waits.
TEST_F(Faults, TheWatchNamesWhatBlocksAScript) {
    const std::string update = "UPDATE nq2..NQSetting SET SettingName = SettingName\n";
    const std::string begin = "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n";
    pack("Holder", begin + "BEGIN TRANSACTION\n" + update + "WAITFOR DELAY '01:00:00'\n");
    pack("Waiter", begin + "WHILE 1 = 1 BEGIN TRY\n" + update + "END TRY BEGIN CATCH END CATCH\n");
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const auto start = [&](const char* script, const std::string& seen) {
        const pid_t pid = support::spawn({TSCRIPT_PROGRAM, "run", script}, options,
                                         {output.get(), output.get(), output.get()});
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        std::string watched;
        while (watched.find(seen) == std::string::npos && std::chrono::steady_clock::now() < end)
            watched = run({"journal", "--watch"}).output;
        EXPECT_NE(watched.find(seen), std::string::npos) << watched;
        return pid;
    };
    const pid_t holder = start("Holder", "\tHolder\t");
    const pid_t waiter = start("Waiter", "(sa, SQLCMD, ");
    expectAll({{{"journal", "--watch", "--name", "Wait*", "--json"}, 0, "\"name\": \"Waiter\"", ""},
               {{"journal", "--watch", "--name", "None"}, 0, "", ""}});
    int exitCode = -1;
    for (const pid_t pid : {waiter, holder}) {
        kill(pid, SIGTERM);
        EXPECT_TRUE(support::waitFor(pid, std::chrono::seconds(60), exitCode));
    }
    EXPECT_EQ(run({"journal", "--watch"}).output, "");
}

// The query tool ends with a command that was stopped: it waits for a pipe that nobody fills.
TEST_F(Faults, AStoppedRestoreEndsTheQueryTool) {
    const fs::path backup = folder / "backups" / "pipe";
    ASSERT_EQ(mkfifo(backup.c_str(), 0600), 0);
    std::ofstream writer;
    expectInterrupted({"db", "restore", backup, "copy", "--to", "/data"}, SIGTERM, [&] {
        writer.open(backup);  // opens once the server reads
        return std::ofstream();
    });
}

// Objects of NQ2 are dropped by a script that runs in Dorvas.
TEST_F(Faults, DoctorFindsMissingObjectsOfADatabase) {
    pack(
        "Break",
        "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nUSE nq2\nGO\n"
        "DROP FUNCTION dbo.GetDateTime\nDROP PROCEDURE VT_GetSpParams\nDROP TABLE ZpTscriptExec\n"
        "INSERT ZpTscripts VALUES (2, 'tsLost', 0, GETDATE(), '')\nALTER TABLE ZpTscripts ADD more int NULL\n"
        "DELETE NQSetting WHERE SettingName = 'NQ2_DATABASE_ID'\n");
    ASSERT_EQ(run({"run", "Break"}).exitCode, 0);
    const std::string found = run({"doctor"}).output;
    for (const char* finding :
         {"dbo.GetDateTime (call): Msg 4121", "ZpTscripts (insert): Msg 213", "ZpTscriptExec (read): Msg 208",
          "VT_GetSpParams (call): Msg 2812", "NQSetting (read NQ2_DATABASE_ID): the row is missing",
          "the catalogue lists tsLost, but the stored procedure is missing"})
        EXPECT_NE(found.find(std::string("FAILED   NQ2 schema: ") + finding), std::string::npos) << found;
    EXPECT_NE(found.find("ok       Dorvas schema: "), std::string::npos) << found;
}

// A tool that starts, but does not do what a run needs.
TEST_F(Faults, DoctorRunsTheQueryTool) {
    const auto rows = [this] { return run({"catalogue"}).output + run({"journal"}).output; };
    const std::string before = rows();
    expectAll({{{"doctor"}, 0, "ok       NQ2 query tool: ", ""}});
    EXPECT_EQ(rows(), before);
    pack("Lose", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nDROP DATABASE nq2\n");
    ASSERT_EQ(run({"run", "Lose"}).exitCode, 0);
    expectAll({{{"doctor"}, 5, "-> Create or restore the database", ""}});

    const fs::path tool = m_temp / "sqlcmd";
    support::writeFile(tool, "");
    fs::permissions(tool, fs::perms(0700));
    const std::string path = run({"config", "get", "host.programs.sqlcmd"}).output;
    replaceInFile(store(), path.substr(0, path.find('\n')), tool);
    const struct {
        const char* tool;
        const char* finding;
    } faults[] = {
        {"exit 0", "succeeds without the statement's result; its output is empty"},
        {"exit 1", "fails on a statement"},
        {"echo Login failed", "succeeds without"},
        {"test \"$1\" = -?", "fails on a statement"},
    };
    for (const auto& fault : faults) {
        support::writeFile(tool, std::string("#!/bin/sh\n") + fault.tool + "\n");
        expectAll({{{"doctor"},
                    3,
                    std::string("FAILED   Dorvas query tool: ") + tool.string() + " " + fault.finding,
                    ""}});
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
    // Another program that succeeds is not believed; a tool that writes an empty output is.
    support::writeFile(tool, "#!/bin/sh\nexit 0\n");
    const std::string silent = tool.string() + " ended with exit code 0, but wrote no output";
    expectAll({{{"run", "SiteInventory"}, 3, "", silent},
               {{"exec", "tsEventSummary", "--json"}, 3, "\"exitCode\": 3", silent},
               {{"db", "backup", "dorvas", folder / "backups" / "x.bak"}, 3, "", silent}});
    support::writeFile(tool, "#!/bin/sh\nwhile [ \"$1\" != -o ]; do shift; done\n: >\"$2\"\n");
    support::writeFile(folder / "Scripts" / "Empty.sql", "");
    expectAll({{{"run", "SiteInventory"}, 0, "Succeeded", ""},
               {{"run", "Empty"}, 3, "", "The package has no record."}});
}

TEST_F(Faults, DoctorFindsFaultsOfFoldersAndLimits) {
    struct Fault {
        std::string command;
        const char* finding;
    };
    std::vector<Fault> faults = {
        {"ulimit -f 64", "FAILED   temporary folder: "},  // no file of 64 KiB, as on a full disk
        {"ulimit -n 40", "FAILED   file descriptors: "},
        {"export TMPDIR=/nowhere", "FAILED   TMPDIR: /nowhere: No such file"},
        {"chmod o+w " + inQuotes(folder / "Scripts"), "FAILED   package folder mode: every user"},
    };
    if (geteuid() == 0)
        faults.push_back({"chown 12345 " + inQuotes(folder / "logs"), "FAILED   log folder owner: "});
    for (const auto& fault : faults) {
        const ProgramResult result = runAfter(fault.command, {"doctor"});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_NE(result.output.find(fault.finding), std::string::npos) << result.output << result.errors;
        EXPECT_TRUE(fs::is_empty(folder / "temp"));
    }
}

TEST_F(Faults, DoctorOpensEveryPackageAndNamesOddComponents) {
    const std::string end = "\n#START_SCRIPT#\nPRINT 'x'\n";
    pack("OtherSite", "#START_OPTIONS#\nDatabase Name:Dorvas\nPlexum ID:27" + end);
    pack("OtherGuid", "#START_OPTIONS#\nDatabase Name:NQ2\nGUID:00000000-0000-0000-0000-000000000000" + end);
    pack("NoComponent", "#START_OPTIONS#\nDatabase Name:VTCloud" + end);
    const fs::path scripts = folder / "Scripts";
    const std::string whole = support::readFile(scripts / "PurgeEvents.sql");
    support::writeFile(scripts / "Cut.sql", whole.substr(0, whole.size() / 2));
    support::writeFile(scripts / "Empty.sql", "");
    support::writeFile(scripts / "Plain.sql", "SELECT 1\n");
    fs::create_directory(scripts / "Folder.sql");
    const std::string found = run({"doctor"}).output;
    for (const char* finding :
         {"OtherSite: is made for site 27; this is site 26", "OtherGuid: is made for the NQ2 database 0000",
          "NoComponent: is made for VTCloud, whose component", "Cut: line ", "Empty: is empty",
          "Plain: line 1: ", "Folder: "})
        EXPECT_NE(found.find(std::string("FAILED   package ") + finding), std::string::npos) << found;
    EXPECT_NE(found.find("ok       packages: 5 "), std::string::npos) << found;

    replaceInFile(store(), "= \"127.0.0.1,", "= \"127.0.0.1, ");
    replaceInFile(store(), "nPLATTYPE      = 1", "nPLATTYPE      = 5");
    expectAll({{{"doctor"}, 3, "FAILED   Dorvas server: Database.sINSTANCE", ""}});
    replaceInFile(store(), "nPLATTYPE      = 5", "nPLATTYPE      = 8");
    replaceInFile(store(), "loginTimeout   = 15", "loginTimeout   = \"soon\"");
    replaceInFile(store(), "nSQLAuthType     = 0", "nSQLAuthType     = 7");
    expectAll({{{"doctor"}, 3, "FAILED   store value: host.loginTimeout is 'soon', not a number", ""},
               {{"doctor"}, 3, "FAILED   store value: Database.nSQLAuthType is '7'", ""}});
    replaceInFile(store(), "\"Installed\"", "\"installed\"");
    expectAll({{{"doctor"}, 3, "FAILED   platform type: Base.nPLATTYPE is 8", ""},
               {{"doctor"}, 3, "FAILED   component of NQ2: ", ""}});

    fs::remove_all(scripts);
    fs::create_directory(scripts);
    for (const char* name : {"One.sql", "Two.sql"}) support::writeFile(scripts / name, "SELECT 1\n");
    expectAll({{{"doctor"}, 3, "FAILED   packages: none of 2 can be decrypted", ""}});
}

TEST_F(Faults, SixtyFourProcessesRunOnePackageSideBySide) {
    constexpr int kRuns = 64;
    pack("Many", "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT 'run %s.'\n");
    const support::Descriptor output = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    std::vector<pid_t> runs;
    for (int i = 0; i < kRuns; ++i)
        runs.push_back(support::spawn({TSCRIPT_PROGRAM, "run", "Many", "-q", "-p", std::to_string(i)},
                                      options, {output.get(), output.get(), output.get()}));
    for (const pid_t run : runs) {
        int exitCode = -1;
        EXPECT_TRUE(support::waitFor(run, std::chrono::minutes(5), exitCode));
        EXPECT_EQ(exitCode, 0) << support::contentOf(output);
    }
    const std::string rows = "\n" + journal("Many");
    const std::string log = support::readFile(folder / "logs" / "ZephraDebug.log");
    for (int i = 0; i < kRuns; ++i) {
        const std::string value = std::to_string(i);
        EXPECT_NE(rows.find("\n1|" + value + "|"), std::string::npos) << value;
        EXPECT_NE(log.find("run " + value + ".\n"), std::string::npos) << value;
    }
}

// An integer of three bytes: FreeTDS aborts the process.
TEST(MalformedReply, IsAFailedConnection) {
    const support::TsqlBox box;
    support::SampleInstallation installation;
    support::SampleInstallation::loadSchema(box);
    const support::Proxy proxy(box.port(), {.original = "\x26\x04", .forged = "\x26\x03"});
    installation.useServer("127.0.0.1," + std::to_string(proxy.port()), box.login(), box.password());
    expectCases({{{"catalogue"}, 4, "", "the server sent a malformed reply"}}, installation.storeFile());
}

}  // namespace

// Servers that refuse, stop, keep silent or are killed: the cause is named and the run closed.
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <thread>

#include "Faults.h"
#include "Proxy.h"
#include "SampleInstallation.h"
#include "TsqlBox.h"

namespace {

using support::ProgramResult;

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
        const std::string address = "localhost," + std::to_string(proxy.port());
        expectAll({{{"config", "set", "Database.sINSTANCE", address}, 0, "", ""}});
        for (const Words& command : {Words{"run", "SiteInventory"}, {"db", "list"}}) {
            const ProgramResult result =
                runAfter("export GNUTLS_SYSTEM_PRIORITY_FILE=" + inQuotes(noOldTls), command);
            EXPECT_EQ(result.exitCode, 4) << joined(command) << result.errors;
            EXPECT_NE((result.output + result.errors).find(c.reason), std::string::npos)
                << joined(command) << result.output << result.errors;
            EXPECT_EQ(result.errors.find("Sqlcmd:"), std::string::npos) << "the query tool is asked, too";
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
    packBody("Wait", "PRINT 'x'\nGO\nWAITFOR DELAY '00:01:00'\n");
    const Background waiting = start({"run", "Wait"});
    while (journal("Wait").find("0||") == std::string::npos) std::this_thread::yield();
    kill(serverOf(folder), SIGKILL);
    EXPECT_EQ(waiting.end(), 4);
    const std::string text = waiting.output();
    for (const char* part : {"the connection to the server failed during the run", "the run stays open"})
        EXPECT_NE(text.find(part), std::string::npos) << text;
}

// A connection that is lost during a run is the cause of its failure. The journal's row is closed over a new
// connection; if there is none, the row stays open, and the report says so.
TEST_F(Faults, ALostConnectionIsNamedAndTheRowClosedOrReported) {
    using support::NetworkFault;
    packBody("Rows",
             "DECLARE @i int = 0 WHILE @i < 3000 BEGIN SELECT REPLICATE('r', 200) SET @i = @i + 1 END\n");
    packBody("Wait", "PRINT 'begun'\nGO\nWAITFOR DELAY '00:01:00'\n");
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
        const Background cut({"run", c.script}, {storeVariable(), "SQLCMD_ODBC_DRIVER=" + c.driver});
        while (journal(c.script).size() == before.size()) std::this_thread::yield();
        const auto latest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (c.script == "Wait" && !hasBegun() && std::chrono::steady_clock::now() < latest)
            std::this_thread::yield();
        c.breakNetwork();
        EXPECT_EQ(cut.end(), 4);
        proxy.setFault({});
        const std::string text = cut.output();
        EXPECT_NE(text.find(c.report), std::string::npos) << text;
        EXPECT_NE(journal(c.script).find(c.row), std::string::npos) << text;
    }
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

    const Background endless = start({"run", "Endless"});
    while (journal("Endless").find("0||") == std::string::npos) std::this_thread::yield();
    stopServer();
    kill(endless.pid(), SIGINT);
    waitUntilConnected();
    kill(endless.pid(), SIGINT);
    EXPECT_EQ(endless.end(), 130);
    EXPECT_NE(endless.output().find("its end is not recorded"), std::string::npos) << endless.output();
    runsAgain();
}

// The journal's statement waits for a lock that another run holds.
TEST_F(Faults, AQueryTimeoutIsNamed) {
    pack("Hold",
         "#START_OPTIONS#\nDatabase Name:NQ2\n#START_SCRIPT#\nUSE dorvas\nGO\nBEGIN TRANSACTION\n"
         "UPDATE ZpTscriptExec SET status = status\nWAITFOR DELAY '00:01:00'\n");
    replaceInFile(store(), "loginTimeout   = 15", "loginTimeout   = 15\nqueryTimeout = 1");
    const Background holder = start({"run", "Hold"});
    while (run({"journal", "--db", "NQ2", "--name", "Hold"}).output.find("running") == std::string::npos)
        std::this_thread::yield();
    const ProgramResult result = run({"run", "SiteInventory"});
    EXPECT_EQ(result.exitCode, 4) << result.output;
    EXPECT_NE(result.errors.find("HYT00"), std::string::npos) << result.errors;
    kill(holder.pid(), SIGTERM);
    holder.end();
}

// The journal is in another database than the table for which one script waits. The row of a killed run,
// which has no session, does not take that of the next run.
TEST_F(Faults, TheWatchNamesWhatBlocksAScript) {
    packBody("Kill",
             "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, userId)\n"
             "SELECT tsId, type, 'Killed', DATEADD(second, -5, timeStart), timeEnd, 0, '', 0 FROM "
             "ZpTscriptExec\n");
    ASSERT_EQ(run({"run", "Kill"}).exitCode, 0);
    const std::string update = "UPDATE nq2..NQSetting SET SettingName = SettingName\n";
    packBody("Holder", "BEGIN TRANSACTION\n" + update + "WAITFOR DELAY '01:00:00'\n");
    packBody("Waiter", "WHILE 1 = 1 BEGIN TRY\n" + update + "END TRY BEGIN CATCH END CATCH\n");
    const auto expectWatched = [&](const std::string& seen) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        std::string watched;
        while (watched.find(seen) == std::string::npos && std::chrono::steady_clock::now() < end)
            watched = run({"journal", "--watch"}).output;
        EXPECT_NE(watched.find(seen), std::string::npos) << watched;
        EXPECT_NE(watched.find(" s\t-\t-\t-\n", watched.find("\tKilled\t")), std::string::npos) << watched;
    };
    const Background holder = start({"run", "Holder"});
    expectWatched("\tHolder\t");
    const Background waiter = start({"run", "Waiter"});
    expectWatched("(sa, SQLCMD, ");
    expectAll({{{"journal", "--watch", "--name", "Wait*", "--json"}, 0, "\"name\": \"Waiter\"", ""},
               {{"journal", "--watch", "--name", "Killed"}, 0, " s\t-\t-\t-\n", ""},
               {{"journal", "--watch", "--name", "None"}, 0, "", ""}});
    for (const Background* script : {&waiter, &holder}) {
        kill(script->pid(), SIGTERM);
        script->end();
    }
    EXPECT_EQ(run({"journal", "--watch", "--name", "*er"}).output, "");
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

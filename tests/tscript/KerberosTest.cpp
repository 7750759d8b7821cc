// Windows authentication of the query tool and of the library's connections, with a KDC of the test's own.
#include <unistd.h>

#include <functional>

#include "Installation.h"
#include "Proxy.h"
#include "Realm.h"
#include "SampleInstallation.h"
#include "TsqlBox.h"

namespace {

using support::ProgramOptions;
using support::ProgramResult;
using support::Realm;
using support::runProgram;
using support::SampleInstallation;
using support::TsqlBox;

constexpr char kPackage[] = "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\nSELECT SUSER_SNAME()\n";

// The stored credentials are those of a login that the server does not have.
class WindowsAuthentication : public testing::Test {
  protected:
    WindowsAuthentication() {
        SampleInstallation::loadSchema(box);
        realm.addService(box.port());
        realm.logIn("person");
        installation.useServer(server(), "nobody", "wrong");
        installation.set("Database", "nSQLAuthType", 1);
        support::writeFile(folder / "Who.txt", kPackage);
        EXPECT_EQ(run({"pack", folder / "Who.txt"}).exitCode, 0);
    }
    std::string server() const { return "localhost," + std::to_string(box.port()); }
    // Restarts the server with another clock, as faketime does.
    void restartBox(const char* clock) {
        box.stop();
        std::string library = runProgram({"faketime", "-f", "+0", "printenv", "LD_PRELOAD"}).output;
        library.resize(library.find('\n'));
        setenv("LD_PRELOAD", library.c_str(), 1);
        setenv("FAKETIME", clock, 1);
        box.start();
        unsetenv("LD_PRELOAD");
        unsetenv("FAKETIME");
    }
    ProgramResult run(const Words& words) { return tscript(words, {}, installation.storeFile()); }

    Realm realm;
    const support::Certificates certificates;
    TsqlBox box{certificates.options("good", {"--keytab", realm.keytab(), "--encryption", "required"})};
    SampleInstallation installation;
    const support::TempDir folder;
};

TEST_F(WindowsAuthentication, OnlyVersionAndBackupsUseTheStoredLogin) {
    const fs::path backup = folder / "nq2.bak";
    expectCases({{{"run", "Who"}, 0, "person@EXAMPLE.TEST", ""},
                 {{"exec", "tsListNodes"}, 0, "archive-01", ""},
                 {{"catalogue"}, 0, "tsListNodes", ""},
                 {{"journal"}, 0, "Who", ""},
                 {{"schema", "check", "Dorvas"}, 0, "ok       VT_GetSpParams", ""},
                 {{"credentials", "test", "Dorvas"}, 5, "", "Login failed for user 'nobody'"},
                 {{"doctor"}, 5, "warning  Dorvas stored login: the server refuses the login", ""},
                 {{"db", "list"}, 0, "nq2", ""},
                 {{"db", "version"}, 1, "", "Failed to execute DB query"},
                 {{"db", "backup", "NQ2", backup}, 1, "", "Failed to execute DB query"}},
                installation.storeFile());
    installation.useServer(server(), box.login(), box.password());
    expectCases({{{"db", "version"}, 0, "15", ""},
                 {{"db", "backup", "NQ2", backup}, 0, "", ""},
                 {{"db", "last-backup", "NQ2"}, 0, " day(s) ago", ""}},
                installation.storeFile());
}

TEST_F(WindowsAuthentication, TheToolTakesServicePrincipalAndEncryptionFromItsEnvironment) {
    const std::string port = std::to_string(box.port());
    const std::string principal = "SQLCMD_SERVER_SPN=MSSQLSvc/";
    const std::tuple<std::string, std::string, Words> cases[] = {
        {"127.0.0.1", "person@EXAMPLE.TEST", {principal + "localhost:" + port}},
        {"127.0.0.1", "No Kerberos ticket for MSSQLSvc/nowhere", {principal + "nowhere"}},
        {"localhost",
         "person@EXAMPLE.TEST",
         {"SQLCMD_ENCRYPT=verify", "SQLCMD_CA_FILE=" + certificates.file("ca.pem")}}};
    for (const auto& [host, output, environment] : cases) {
        ProgramOptions options;
        options.environment = environment;
        const ProgramResult result = runProgram(
            {SQLCMD_PROGRAM, "-E", "-S", host + "," + port, "-Q", "SELECT SUSER_SNAME()"}, options);
        EXPECT_NE((result.output + result.errors).find(output), std::string::npos) << result.output;
    }
}

TEST_F(WindowsAuthentication, AFailureHasItsCause) {
    const std::string ticket =
        "No Kerberos ticket for MSSQLSvc/localhost:" + std::to_string(box.port()) + ": ";
    const std::string refusal = "The login is from an untrusted domain";
    const struct {
        std::function<void()> happens;
        std::string message, serverLog;
        Words clock = {};
    } cases[] = {
        {[&] { realm.logOut(); }, ticket + "No Kerberos credentials available (default cache: ", ""},
        {[&] {
             realm.logIn("person", {"-l", "1s"}), sleep(2);
         },
         ticket + "Ticket expired", ""},
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // faketime must be loaded first
        {[&] { realm.logIn("person"); }, ticket + "Clock skew too great", "", {"faketime", "-f", "+10m"}},
        {[&] { restartBox("+10m"); }, refusal, "Clock skew too great"},
#endif
        {[&] { realm.changeServiceKeys(box.port()); }, refusal, "kvno 3 not found in keytab"},
        {[&] { realm.deleteService(box.port()); }, ticket + "Server MSSQLSvc/", ""},
        {[&] { realm.stopKdc(); }, ticket + "Cannot contact any KDC for realm 'EXAMPLE.TEST'", ""},
    };
    ProgramOptions options;
    options.environment = {"ZEPHRA_REGISTRY=" + installation.storeFile().string()};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        c.happens();
        const auto runUnder = [&](Words words) {
            words.insert(words.begin(), c.clock.begin(), c.clock.end());
            return runProgram(words, options);
        };
        const ProgramResult tool = runUnder({SQLCMD_PROGRAM, "-E", "-S", server(), "-Q", "SELECT 1"});
        EXPECT_EQ(tool.exitCode, 1);
        EXPECT_NE((tool.output + tool.errors).find(c.message), std::string::npos)
            << tool.output << tool.errors;
        const ProgramResult script = runUnder({TSCRIPT_PROGRAM, "run", "Who"});
        EXPECT_EQ(script.exitCode, c.message == refusal ? 5 : 4);
        EXPECT_NE(script.errors.find(c.message), std::string::npos) << script.errors;
        EXPECT_NE(box.errors().find(c.serverLog), std::string::npos) << box.errors();
    }
}

// The first ticket of a client keytab may be in the making when a login fails: it is tried once more.
TEST_F(WindowsAuthentication, AFailureBesideTheFirstTicketIsTriedAgain) {
    realm.useTickets("of the keytab");
    for (const bool hasKeytab : {true, false}) {
        SCOPED_TRACE(hasKeytab);
        if (hasKeytab) setenv("KRB5_CLIENT_KTNAME", realm.clientKeytab().c_str(), 1);
        for (const bool isTool : {true, false}) {
            const support::Proxy proxy(box.port(),
                                       {.kind = support::NetworkFault::kClose, .onlyFirst = true});
            const std::string address = "localhost," + std::to_string(proxy.port());
            realm.addService(proxy.port());
            installation.useServer(address, box.login(), box.password());
            ProgramOptions options;
            options.environment = {"ZEPHRA_REGISTRY=" + installation.storeFile().string()};
            const ProgramResult result =
                runProgram(isTool ? Words{SQLCMD_PROGRAM, "-E", "-S", address, "-Q", "SELECT 1"}
                                  : Words{TSCRIPT_PROGRAM, "schema", "check", "Dorvas"},
                           options);
            EXPECT_EQ(result.exitCode == 0, hasKeytab) << result.output << result.errors;
        }
        unsetenv("KRB5_CLIENT_KTNAME");
    }
}

}  // namespace

// Catalogue and journal as `tscript` lists them.
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "Installation.h"

namespace {

using support::ProgramResult;

TEST_F(Installation, ListsCatalogueAndJournal) {
    packBody(
        "Rows",
        "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, userId) VALUES\n"
        "(1, 2, 'O''Brien', dbo.GetDateTime(1700000000), dbo.GetDateTime(1700000125), 1, "
        "'a' + CHAR(9) + CHAR(27) + 'b', 0),\n"
        "(1, 2, '50%', dbo.GetDateTime(1700000001), dbo.GetDateTime(1700000001), 2, NULL, 0),\n"
        "(1, 2, '50x', dbo.GetDateTime(1700000002), dbo.GetDateTime(1700000002), 0, '', 7),\n"
        "(1, 2, '[a_b]', dbo.GetDateTime(1700000003), dbo.GetDateTime(1700000003), 1, '', 0),\n"
        "(1, 1, 'Odd', dbo.GetDateTime(1700000003), dbo.GetDateTime(1700000003), 7, '', 0)\n"
        "INSERT ZpTscripts VALUES (102, 'Both', 0, GETDATE(), ''), (1, 'Other', 0, GETDATE(), '')\n");
    ASSERT_EQ(run({"run", "Rows"}).exitCode, 0);
    pack("tsListNodes", "#START_SCRIPT#\nPRINT 'x'\n");
    const std::string all = "Odd,[a_b],50x,50%,O'Brien,Rows";
    const std::pair<Words, std::string> cases[] = {
        {{}, all},
        {{"--last", "0"}, all},
        {{"--last", "2"}, "Odd,[a_b]"},
        {{"--name", "O'Brien"}, "O'Brien"},
        {{"--name", "' OR 1 = 1 --"}, ""},
        {{"--name", "50%"}, "50%"},
        {{"--name", "50?"}, "50x,50%"},
        {{"--name", "*r*"}, "O'Brien,Rows"},
        {{"--name", "[a_b]"}, "[a_b]"},
        {{"--name", "_a_b]"}, ""},
        {{"--status", "ok", "--last", "2"}, "[a_b],O'Brien"},
        {{"--status", "failed"}, "50%"},
        {{"--status", "running"}, "50x"},
        {{"--failed"}, "50%"},
        {{"--since", "yesterday"}, "Rows"},
        {{"--slower-than", "2m"}, "50x,O'Brien"},
        {{"--slower-than", "125s", "--status", "ok"}, ""},
        {{"--slower-than", "2m", "--last", "1", "--status", "ok"}, "O'Brien"},
        {{"--since", "1h"}, "Rows"},
        {{"--since", "2023-11-10", "--name", "50*"}, "50x,50%"},
        {{"--db", "nq2"}, ""},
    };
    for (const auto& [filter, names] : cases) {
        Words words = filter;
        words.insert(words.begin(), "journal");
        EXPECT_EQ(namesIn(run(words)), names) << joined(words);
    }
    EXPECT_EQ(namesIn(run({"journal", "tail", "--last", "2"})), "[a_b],Odd");
    EXPECT_EQ(namesIn(run({"catalogue", "--name", "tsS*"})), "tsSwitchNode");
    for (const char* pattern : {"ts%", "tsS_itchNode", "[t]s*", "' OR name LIKE '%", "\"", "--"})
        EXPECT_EQ(namesIn(run({"catalogue", "--name", pattern})), "") << pattern;
    expectAll({
        {{"journal", "--name", "O*"}, 0, "\t2 min 05 s\ta  b\n", ""},
        {{"journal", "--status", "running"}, 0, "\t50x\tabandoned\t", ""},
        {{"journal", "--name", "Odd"}, 0, "\tOdd\t7\t", ""},
        {{"journal", "--status", "running", "--stale", "900000"}, 0, "\t50x\trunning\t", ""},
        {{"journal", "--json", "--name", "50x"}, 0, R"("kind":"procedure","status":"abandoned",)", ""},
        {{"journal", "--json", "--name", "50x"}, 0, R"("start":"2023-11-14T22:13:22Z","end":null,)", ""},
        {{"journal", "--json", "--name", "Rows"}, 0, R"("name":"Rows","kind":"package","status":"ok",)", ""},
        {{"journal", "--json", "--name", "Odd"}, 0, R"("kind":"other","status":"7",)", ""},
        {{"catalogue", "--json", "--name", "Both"}, 0, R"("kind":"both","type":102,"secured":false,)", ""},
        {{"catalogue", "--json", "--name", "Other"}, 0, R"("kind":"other","type":1,)", ""},
        {{"catalogue", "--json", "--name", "tsSw*"}, 0, R"("kind":"procedure","type":10,"secured":true)", ""},
        {{"journal", "--json", "--name", "none"}, 0, "[]\n", ""},
        {{"journal", "export", "--csv", "--name", "O'*"},
         0,
         "id,name,kind,status,start,end,seconds,user,input\r\n2,\"O'Brien\",\"procedure\",\"ok\","
         "\"2023-11-14T22:13:20Z\",\"2023-11-14T22:15:25Z\",125,0,\"a  b\"\r\n",
         ""},
        {{"journal", "export", "--csv", "--name", "none"}, 0, "id,name,kind,status", ""},
        {{"journal", "export", "--status", "running"}, 0, "[\n{\"id\":4,\"name\":\"50x\"", ""},
        {{"journal", "export", "--csv", "--json"}, 2, "", "excludes"},
        {{"journal", "--failed", "--status", "ok"}, 2, "", "excludes"},
        {{"journal", "--slower-than", "fast"}, 2, "", "is not a length of time"},
        {{"journal", "tail", "--last", "0"}, 2, "", "--last"},
        {{"which", "tsSwitchNode"}, 0, "audit level 2, secured", ""},
        {{"which", "tsSwitchNode", "--json"}, 0, R"("kind": "procedure",)", ""},
        {{"which", "tsListNodes", "--json"}, 0, R"("kind": "both",)", ""},
        {{"which", "Rows", "--json"}, 0, R"("kind": "package",)", ""},
        {{"which", "Rows", "--json"}, 0, R"("packageDatabase": "Dorvas")", ""},
        {{"which", "None"}, 2, "", "neither a package nor a stored-procedure"},
        {{"journal", "--status", "broken"}, 2, "", "broken"},
        {{"journal", "--since", "2026-02-30"}, 2, "", "is not a time"},
        {{"journal", "--since", "9999w"}, 2, "", "is not a time"},
        {{"journal", "--last", "-1"}, 2, "", "-1"},
        {{"journal", "--name", std::string(257, '*')}, 2, "", "longer than 256"},
        {{"catalogue", "--db", "Nope"}, 2, "", "Dorvas, NQ2"},
        {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
        {{"journal"}, 4, "", "cannot be reached"},
    });
}

TEST_F(Installation, FollowsTheJournal) {
    packBody("Short", "WAITFOR DELAY '00:00:03'\n");
    ASSERT_EQ(run({"exec", "tsEventSummary"}).exitCode, 0);
    const Background tail = start({"journal", "tail", "-f", "--json"});
    const auto expectLine = [&](const std::string& part) {
        for (int i = 0; i < 600 && tail.output().find(part) == std::string::npos; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_NE(tail.output().find(part), std::string::npos) << tail.output();
    };
    expectLine("{\"id\":1,\"name\":\"tsEventSummary\",\"kind\":\"procedure\",\"status\":\"ok\"");
    EXPECT_EQ(run({"run", "Short"}).exitCode, 0);
    expectLine("\n{\"id\":2,\"name\":\"Short\",\"kind\":\"package\",\"status\":\"running\"");
    expectLine("\n{\"id\":2,\"name\":\"Short\",\"kind\":\"package\",\"status\":\"ok\"");
    kill(tail.pid(), SIGINT);
    EXPECT_EQ(tail.end(), 130);

    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    support::Descriptor reader(ends[0]);
    support::Descriptor writer(ends[1]);
    const support::Descriptor nothing = support::memoryFile();
    support::ProgramOptions options;
    options.environment = {storeVariable()};
    const pid_t unread = support::spawn({TSCRIPT_PROGRAM, "journal", "tail", "-f"}, options,
                                        {nothing.get(), writer.get(), nothing.get()});
    writer.reset();
    char first = 0;
    EXPECT_EQ(read(reader.get(), &first, 1), 1);
    reader.reset();
    int exitCode = 0;
    EXPECT_TRUE(support::waitFor(unread, std::chrono::seconds(20), exitCode));
}

TEST_F(Installation, ShowsOneRunWithItsRecord) {
    const std::string header = "#START_OPTIONS#\nDatabase Name:Dorvas\n#START_SCRIPT#\n";
    pack("Fails", header + "PRINT 'before %s'\nGO\nSELECT * FROM absent\n");
    pack("Change", header +
                       "DELETE ZpTscriptExec WHERE id = 2\n"
                       "INSERT ZpTscriptExec (tsId, type, name, timeStart, timeEnd, status, inputParams, "
                       "userId) VALUES (1, 4, 'Fails', GETDATE(), GETDATE(), 2, 'x', 0)\n");
    EXPECT_EQ(run({"run", "Fails", "-p", "<x>"}).exitCode, 1);
    EXPECT_EQ(run({"exec", "tsEventSummary", "@days = 3"}).exitCode, 0);
    EXPECT_EQ(run({"run", "Change"}).exitCode, 0);
    const auto expectShown = [&](const std::string& id, const std::string& part) {
        expectAll({{{"journal", "show", id}, 0, part, ""}});
    };
    expectShown("1", "run        1, failed\nscript     Fails (package)\nstarted    ");
    expectShown("1",
                "cause      query tool, Msg 208, level 16, state 1, line 1: Invalid object name 'absent'");
    expectShown("1", "input      <x>\nsha256     ");
    expectShown("1", "before <x>\nMsg 208");
    expectShown("2",
                "run        2, ok; the journal has no such row any more\nscript     tsEventSummary (proc");
    expectShown("2", "Events of the last 3 day(s)");
    expectShown("4", "run        4, failed\nscript     Fails (package)");
    expectShown("4", "record     none: the run left no record, or it was deleted\n");
    expectAll({{{"journal", "show", "1", "--json"}, 0, "\"message\": 208", ""},
               {{"journal", "show", "4", "--json"}, 0, "\"recordProblem\": \"the run left", ""},
               {{"journal", "show", "5"}, 2, "", "the journal of Dorvas has no run 5"},
               {{"journal", "show", "0"}, 2, "", "ID"},
               {{"journal", "show", "2147483647"}, 2, "", "has no run 2147483647"},
               {{"journal", "show"}, 2, "", "ID"},
               {{"doctor"}, 0, "run records: " + (folder / "records").string(), ""}});
    fs::path record;
    for (const auto& file : fs::directory_iterator(folder / "records"))
        if (file.path().string().find("-Dorvas-1-") != std::string::npos) record = file.path();
    replaceInFile(record, "\"server\": \"127", "\"server\": \"10");
    expectShown("1", "sha256");  // the installation is this one
    replaceInFile(record, "\"installation\": \"", "\"installation\": \"/other");
    expectShown("1", "record     none: the record of this number is of another installation, /other");
    support::writeFile(record, "{");
    expectShown("1", record.string() + ": it is damaged");
    fs::permissions(folder / "records", fs::perms::all);
    expectShown("1", "users other than its owner may write to it");
    expectAll({{{"exec", "tsEventSummary"}, 0, "Tscript Execution Succeeded!", ""},
               {{"doctor"}, 0, "run records: " + (folder / "records").string() + ": users other", ""},
               {{"config", "set", "host.runRecords", "records"}, 2, "", "absolute path"},
               {{"config", "set", "host.runRecords", folder / "none"}, 0, "", ""}});
    expectShown("1", "none: No such file");
    replaceInFile(store(), "runRecords", "noRecords");
    expectShown("1", "record     none: the store names no folder for records");
}

TEST_F(Installation, GivesEveryListingAsJson) {
    const fs::path purge = folder / "Scripts" / "PurgeEvents.sql";
    support::writeFile(m_temp / "p.txt", "#START_SCRIPT#\nPRINT '%s'\n");
    ASSERT_EQ(run({"run", "PurgeEvents", "-p", "30", "-p", "2"}).exitCode, 0);
    // With a member of the object, or of the array's first one.
    const std::pair<Words, const char*> cases[] = {
        {{"catalogue"}, "auditLevel"},
        {{"journal"}, "seconds"},
        {{"which", "tsSwitchNode"}, "secured"},
        {{"params", "tsEventSummary"}, "type"},
        {{"inspect", purge}, "authentic"},
        {{"lint", m_temp / "p.txt"}, "placeholders"},
        {{"db", "list"}, "name"},
        {{"db", "version"}, "majorVersion"},
        {{"db", "last-backup", "dorvas"}, "daysAgo"},
        {{"config", "show"}, "value"},
        {{"config", "get", "Base.nPLATTYPE"}, "value"},
        {{"doctor"}, "checks"},
        {{"sandbox", "status", "--dir", folder}, "process"},
        {{"run", "PurgeEvents", "-p", "30", "-p", "2"}, "output"},
        {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--dry-run"}, "sql"},
        {{"exec", "tsListNodes"}, "status"},
    };
    const std::string password = support::readFile(folder / "password").substr(0, 32);
    for (const auto& [words, name] : cases) {
        SCOPED_TRACE(joined(words));
        Words asJson = words;
        asJson.emplace_back("--json");
        const ProgramResult result = run(asJson);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        nlohmann::json value = nlohmann::json::parse(result.output, nullptr, false);
        if (value.is_array() && !value.empty()) value = value.front();
        EXPECT_TRUE(value.contains(name)) << result.output;
        EXPECT_EQ(result.output.find(password), std::string::npos);
        EXPECT_EQ(result.output.find("ZC1."), std::string::npos);
    }
}

}  // namespace

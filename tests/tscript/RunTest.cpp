// `tscript run` and what it shows and saves.
#include <nlohmann/json.hpp>

#include "Installation.h"

namespace {

using support::ProgramResult;

TEST_F(Installation, RunsScriptsByName) {
    packBody("Echo", "SET NOCOUNT ON\nSELECT '<%s|%s|%s>'\n");
    expectAll({
        {{"run", "PurgeEvents", "-p", "30", "-p", "2"}, 0, "Deleted 54 event(s)", ""},
        {{"run", "PurgeEvents", "-p", "x", "-p", "2"}, 1, "Conversion failed", "the script failed"},
        {{"run", "CloseAuditPeriods", "-p", "2024-01", "-p", "2024-02"}, 1, "PRIMARY KEY", "script failed"},
        {{"run", "EventReport", "-p", "10"}, 0, "<errors days=\"10\">", ""},
        {{"run", "SiteInventory"}, 0, "Zürich", ""},
        {{"run", "NQCleanup"}, 0, "waiting", ""},
        {{"run", "Echo", "-p", "[a,b]", "-p", "-5", "-p", ""}, 0, "<[a,b]|-5|>", ""},
        {{"run", "Echo", "-p", "O'Brien", "-p", "50% {x};", "-p", "é"}, 0, "<O'Brien|50% {x};|é>", ""},
        {{"help", "PurgeEvents"}, 0, "PurgeEvents DAYS SEVERITY", ""},
        {{"help", "tsEventSummary"}, 0, "EXEC tsEventSummary", ""},
        {{"help", "journal"}, 2, "", "tscript journal --help"},
        {{"params", "tsEventSummary"}, 0, "@zone", ""},
        {{"exec", "tsEventSummary", "@days = 7", "--input", "seven"}, 0, "archive-01", ""},
        {{"exec", "tsEventSummary", "-p", "days=7", "-p", "@ZONE=x' y"}, 0, "Succeeded", ""},
        {{"exec", "tsEventSummary", "-p", "zone=x' y", "--dry-run"}, 0, "@zone = 'x'' y'", ""},
        {{"exec", "tsEventSummary", "-p", "days=7; DROP"}, 2, "", "the value of @days is no int"},
        {{"exec", "tsEventSummary", "-p", "no=7"}, 2, "", "has no parameter @no"},
        {{"exec", "tsEventSummary", "-p", "7"}, 2, "", "not of the form NAME=VALUE"},
        {{"exec", "tsEventSummary", "-p", "zone=a\"b"}, 2, "", "double quote"},
        {{"exec", "tsEventSummary", "-p", "zone=$(HOME)"}, 2, "", "a line break or $("},
        {{"exec", "tsEventSummary", "@days = 7\nGO"}, 2, "", "a line break or $("},
        {{"run", "Echo", "-p", "a\nGO", "-p", "", "-p", ""}, 2, "", "value 1 has a line break"},
        {{"run", "Echo", "-p", "", "-p", "$(x)", "-p", "", "--dry-run"}, 2, "", "2 completes a variable"},
        {{"run", "Echo", "-p", "$(x)", "-p", "", "-p", "", "--allow-tool-commands"}, 0, "<$(x)||>", ""},
        {{"exec", "tsEventSummary", "\"x\""}, 2, "", "double quote"},
        {{"run", "PurgeEvents", "-p", "30\xFF"}, 2, "", "a parameter holds bytes that are not UTF-8"},
        {{"exec", "tsSwitchNode", "'spare', 1"}, 5, "", "Need userId input"},
        {{"exec", "tsNothing"}, 2, "", "not a permanent tscript"},
        {{"exec", "tsEventSummary", "--db", "Nope"}, 2, "", "Dorvas, NQ2"},
        {{"run", "tsEventSummary"}, 2, "", "tscript exec tsEventSummary"},
        {{"run", "Missing"}, 3, "", "there is no package"},
    });
    const std::string variable = "#START_SCRIPT#\n:setvar who me\nPRINT '<$(who)>'\n";
    pack("Literal", variable);
    pack("Expanded", "#START_OPTIONS#\nDescription:Who\nTool Variables:yes\n" + variable);
    expectAll({{{"run", "Literal"}, 0, "<$(who)>", ""},
               {{"run", "Expanded"}, 0, "<me>", ""},
               {{"run", "Literal"}, 0, "<$(who)>", ""}});
    pack("Program",
         "#START_OPTIONS#\nDescription:x\nTool Variables:yes\n#START_SCRIPT#\n!!echo ran\nPRINT '$(HOME)'\n");
    const ProgramResult program = run({"run", "Program"});
    EXPECT_EQ(program.exitCode, 1) << program.output;
    EXPECT_EQ(program.output.find("\nran\n"), std::string::npos);
    EXPECT_EQ(program.output.find(std::string("/")), std::string::npos) << program.output;
    // What follows a refused command was meant for another server, or for what another file prepares.
    packBody("Refused", "PRINT 'before'\nGO\n:connect other\nGO\nPRINT 'after'\n");
    const ProgramResult refused = run({"run", "Refused"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.output.find("before\nSqlcmd: Error: ':connect' is disabled"), std::string::npos)
        << refused.output;
    EXPECT_EQ(refused.output.find("after"), std::string::npos) << refused.output;
    EXPECT_NE(refused.errors.find("disabled by -X1.\n  data       unknown"), std::string::npos) << refused.errors;
    EXPECT_EQ(journal("CloseAuditPeriods").rfind("2|2024-01, 2024-02|"), 3U) << journal("CloseAuditPeriods");
    EXPECT_NE(journal("tsEventSummary").find("1|seven|"), std::string::npos);
    EXPECT_NE(journal("Echo").find("1|O'Brien, 50% {x};, é|"), std::string::npos);
}

TEST_F(Installation, RunsScriptsWithNamedValues) {
    const std::string script = "#START_SCRIPT#\nSET NOCOUNT ON\nPRINT '<%s|%s|%s>'\n";
    pack("Typed",
         "#START_OPTIONS#\nDatabase Name:Dorvas\nDescription:Prints.\nParameter:days int(1..365) 30 \"Age in "
         "\"\"days\"\"\"\n"
         "Parameter:since date \"First day\"\nParameter:note string(5) 'it''s'\n#START_USAGE#\nTyped\n" +
             script);
    expectAll({
        {{"run", "Typed", "--since", "2026-02-28"}, 0, "<30|2026-02-28|it's>", ""},
        {{"run", "Typed", "--SINCE=2026-02-28", "--days", "+7", "--note=--x"}, 2, "", "--days is no int"},
        {{"run", "Typed", "--SINCE=2026-02-28", "--days", "7", "--note=--x"}, 0, "<7|2026-02-28|--x>", ""},
        {{"run", "Typed", "-p", "9", "--since", "2024-02-29", "-p", "ééééé"}, 0, "<9|2024-02-29|", ""},
        {{"run", "Typed", "--days", "-5", "--since", "2026-01-01"}, 2, "", "is not in 1..365: '-5'"},
        {{"run", "Typed", "--since", "2026-02-29"}, 2, "", "--since is no date"},
        {{"run", "Typed", "--since", "2026-02-28", "--note", "123456"}, 2, "", "is longer than 5 characters"},
        {{"run", "Typed", "-p", "0", "-p", "2026-02-28"}, 2, "", "is not in 1..365"},
        {{"run", "Typed"}, 2, "", "the value of --since (date) is missing: First day"},
        {{"run", "Typed", "--json"}, 2, "\"error\": \"the value of --since", "is missing"},
        {{"run", "Typed", "--since"}, 2, "", "'--since' needs a value"},
        {{"run", "Typed", "--sinec", "x"}, 2, "", "Did you mean --since?"},
        {{"run", "Typed", "--days", "1", "--Days", "2"}, 2, "", "--days is given twice"},
        {{"run", "Typed", "--since", "2026-02-28", "x"}, 2, "", "'x' is not expected"},
        {{"run", "Typed", "-p", "1", "-p", "2026-02-28", "-p", "", "-p", "4"}, 2, "", "4 value(s) are given"},
        {{"run", "Typed", "--since", "2026-02-28", "--note", "a';x", "--dry-run"}, 0, "|a'';x>'", ""},
        {{"run", "PurgeEvents", "--quit", "x"}, 2, "", "Did you mean --quiet?"},
        {{"exec", "tsEventSummary", "--days", "7"}, 2, "", "not expected: --days"},
        {{"help", "Typed"}, 0, "--days int(1..365)  Age in \"days\" (default: 30)", ""},
        {{"params", "Typed"}, 0, "--since date        First day", ""},
        {{"params", "Typed", "--json"}, 0, "\"default\": null", ""},
        {{"inspect", folder / "Scripts" / "Typed.sql", "--json"}, 0, "\"description\": \"Prints.\"", ""},
        {{"__complete", "run", "Typed", "--"}, 0, "--since\tFirst day", ""},
    });
    // An older package has a line of its description that begins like a declaration.
    pack("Line", "#START_SCRIPT#\nParameter: the days\n");
    pack("Older", "#START_OPTIONS#\n" + script);
    const fs::path older = folder / "Scripts" / "Older.sql";
    std::string records = withoutSeal(older);
    const std::string line = withoutSeal(folder / "Scripts" / "Line.sql");
    records.insert(records.find('\n') + 1, line.substr(line.find('\n') + 1));
    support::writeFile(older, records);
    expectAll({{{"run", "Older", "-p", "1", "-p", "2", "-p", "3"}, 0, "<1|2|3>", ""},
               {{"run", "Older", "--days", "1"}, 2, "", "line 2: a name must follow the colon"}});
}

TEST_F(Installation, ChecksARunWithoutRunningIt) {
    packBody("Wrong",
             "DELETE FROM EventLog\nGO\nDECLARE @i int\nSELECT nodeIdd FROM EventLog\nGO\n"
             "SELECT 1\nFROM WHERE '%s' = ''\n");
    packBody("Switching",
             "DECLARE @noexec int\nGO\nSET NoExec\nOFF\nDELETE FROM EventLog\nGO\n"
             "SET PARSEONLY OFF\nGO\nDELETE FROM EventLog\n");
    pack("Foreign", "#START_OPTIONS#\nPlexum ID:5\nDatabase Name:Dorvas\n#START_SCRIPT#\nPRINT 'x'\n");
    pack("Variable",
         "#START_OPTIONS#\nDatabase Name:Dorvas\nDescription:x\nTool Variables:yes\n#START_SCRIPT#\n"
         ":setvar t EventLog\nSELECT 1 FROM $(t)\nGO\nPRINT 'x'\n");
    expectAll({
        {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--check"}, 0, "2 batch(es) in Dorvas, refused 0", ""},
        {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--check=compile", "--json"}, 0, "\"errors\": []", ""},
        {{"run", "PurgeEvents", "-p", "30", "--check"}, 2, "", "2 placeholder(s), and 1 value(s)"},
        {{"run", "Wrong", "-p", "x", "--check"}, 1, "line 10 (batch 3): Msg 156: ", "refuses 1 batch(es)"},
        {{"run", "Wrong", "-p", "x", "--check=compile"}, 1, "7 (batch 2): Msg 207: Invalid column name", ""},
        {{"run", "Foreign", "--check"}, 5, "made for site 5", "Foreign is made for site 5; this is site 26"},
        {{"run", "SiteInventory", "--check"}, 0, "site       26, this one", ""},
        {{"run", "Wrong", "--check=all"}, 2, "", "--check"},
        {{"run", "Variable", "--check"}, 0, "parsed 1 batch(es) in Dorvas, refused 0, not sent 1", ""},
        {{"run", "Switching", "--check"}, 0, "parsed 1 batch(es) in Dorvas, refused 0, not sent 3 with", ""},
        {{"run", "Switching", "--check=compile", "--json"}, 0, "\"notSent\": 3,", ""},
    });
    EXPECT_EQ(journal("Wrong"), journal("None"));
    expectAll({{{"run", "PurgeEvents", "-p", "30", "-p", "2"}, 0, "Deleted 54 event(s)", ""},
               {{"sandbox", "down", "--dir", folder}, 0, "", "stopped"},
               {{"run", "PurgeEvents", "-p", "30", "-p", "2", "--check"}, 4, "", "127.0.0.1"}});
}

TEST_F(Installation, ShowsAndSavesResults) {
    pack("Anywhere", "#START_SCRIPT#\nSELECT '<%s>', DB_NAME()\n");
    const fs::path result = m_temp / "result";
    support::writeFile(result, "kept");
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    const auto with = [&](Words more) {
        more.insert(more.begin(), purge.begin(), purge.end());
        return more;
    };
    expectAll({
        {with({"--dry-run"}), 0, "CONVERT(int, '30')", "would run in Dorvas; nothing has been run"},
        {{"run", "Anywhere", "--dry-run", "-p", "it's", "--json"}, 0, R"(\nSELECT '<it''s>')", ""},
        {with({"--dry-run", "-o", "/dev/stdout"}), 0, "CONVERT(int, '30')", ""},
        {with({"--dry-run", "-q", "-p", "%s"}), 2, "int, '30')",
         "2 placeholder(s), and 3 value(s) are given"},
        {with({"-p", "x"}), 2, "", "and 3 value(s) are given\ntscript help"},
        {with({"-p", "x", "--json"}), 2, "\"exitCode\": 2", "and 3 value(s) are given"},
        {with({"-p", "x", "--allow-missing", "--dry-run"}), 0, "int, '30')", "nothing has been run"},
        {{"run", "PurgeEvents", "-p", "%s", "--dry-run", "--json"}, 2, "2 placeholder(s), and 1", "--allow"},
        {{"run", "Anywhere", "-p", "%s", "--dry-run", "--json"}, 0, "holders\": 1,\n  \"values\": 1", ""},
        {{"exec", "tsEventSummary", "@days = 3", "--dry-run"}, 0, " EXEC tsEventSummary @days = 3", ""},
        {{"run", "Missing", "--dry-run"}, 3, "", "there is no package"},
        {{"run", "Missing", "-o", result}, 3, "", "there is no package"},
        {with({"-o", m_temp / "none" / "x"}), 3, "", "No such file"},
        {with({"-o", m_temp.path()}), 3, "", "Is a directory"},
        {with({"-o", "/dev/full"}), 3, "", "No space left on device\nThe script has run"},
        {with({"--db", "nq2"}), 2, "", "made for the database [Dorvas]"},
        {with({"--quiet", "--json"}), 2, "", "excludes"},
    });
    EXPECT_EQ(namesIn(run({"journal"})), "PurgeEvents");  // the one whose result /dev/full did not take
    EXPECT_EQ(support::readFile(result), "kept");
    expectAll({
        {{"run", "Anywhere", "--db", "nq2", "-p", "x"}, 0, "nq2", ""},
        {{"run", "PurgeEvents", "-p", "x", "-p", "2", "--quiet"}, 1, "Conversion failed", "script failed"},
        {with({"-o", result}), 0, "", ""},
    });
    EXPECT_NE(support::readFile(result).find("Execution Succeeded!"), std::string::npos);
    EXPECT_EQ(run(with({"--quiet"})).output, "");
    pack("Xml",
         "#START_SCRIPT#\n:XML ON\nSELECT '<nodes><DataNode name=\"' + name + '\"/></nodes>' FROM DataNode "
         "WHERE id = 3\n");
    const std::string xml = "<nodes><DataNode name=\"Zürich\"/></nodes>";
    expectAll({{{"run", "Xml"}, 0, xml + "\n\nTscript Execution", ""},
               {{"run", "Xml", "-o", result}, 0, "", ""},
               {{"exec", "tsListNodes", "--data", "-o", m_temp / "nodes"}, 0, "", ""}});
    EXPECT_EQ(support::readFile(result), xml + "\n");
    EXPECT_EQ(run({"run", "Xml", "--data"}).output, xml + "\n");
    EXPECT_EQ(support::readFile(m_temp / "nodes").find("Tscript"), std::string::npos);
}

// The code of a result is that of the process.
TEST_F(Installation, EndsWithTheCodeOfEachFailure) {
    const auto expectCode = [&](const Words& words, int code) {
        Words asJson = words;
        asJson.emplace_back("--json");
        const ProgramResult result = run(asJson);
        EXPECT_EQ(result.exitCode, code) << joined(words) << result.output << result.errors;
        const nlohmann::json value = nlohmann::json::parse(result.output, nullptr, false);
        EXPECT_EQ(value.value("exitCode", -1), code) << result.output;
        EXPECT_EQ(value.value("status", ""), code == 0 ? "ok" : "failed");
    };
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    expectCode(purge, 0);
    expectCode({"run", "PurgeEvents", "-p", "x", "-p", "2"}, 1);
    expectCode({"run", "tsListNodes"}, 2);
    expectCode({"run", "Missing"}, 3);
    expectCode({"exec", "tsSwitchNode", "'spare', 1"}, 5);
    ASSERT_EQ(run({"sandbox", "down", "--dir", folder}).exitCode, 0);
    expectCode(purge, 4);
}

TEST_F(Installation, NamesTheCauseOfAFailedRun) {
    packBody("Batches", ":setvar x 1\nPRINT 1\nGO\nPRINT 2\nSELECT 1/0\n");
    packBody("Drop", "%s\n");
    packBody("Quoted", "SELECT 1\nGO\nSELECT * FROM NoTable\nGO\nSELECT 2\n");
    packBody("Printed", "PRINT 'a'\nSELECT 1/0\nGO\nPRINT 'b'\nSELECT 1/0\nGO\nPRINT 'c'\nSELECT 1\n");
    packBody("Counted",
             "SELECT 1\nDELETE EventLog WHERE 1 = 0\nGO\nSELECT 1\nSELECT 1/0\nGO\nSELECT 1\nSELECT 2\n");
    packBody("Open", "SELECT 1\nEXEC sp_who\nGO\nDECLARE @x int\nSET @x = 1/0\n");
    const Words purge = {"run", "PurgeEvents", "-p", "30", "-p", "2"};
    expectAll({
        {{"run", "Quoted"}, 1, "", "batch 2, line 1 (line 6 of the package, empty lines not counted)\n"},
        {{"run", "Printed"}, 1, "", "batch 1, line 2 (line 5 of the package, empty lines not counted)\n"},
        {{"run", "Counted"}, 1, "", "batch 2, line 2 (line 8 of the package, empty lines not counted)\n"},
        {{"run", "Batches"}, 1, "", "batch 2, line 2 (line 8 of the package"},
        {{"run", "Batches"}, 1, "", "statement  SELECT 1/0\n  message    Msg 8134, level 16, state 1\n"},
        {{"run", "Batches"}, 1, "", "batch 1 has run"},
        {{"run", "Batches", "--json"}, 1, "\"packageLine\": 8", "the script failed"},
        {{"exec", "tsEventSummary", "@days = 'x'"}, 1, "", "  message    Msg "},
        {{"run", "Drop", "-p", "DROP TABLE nq2..ZpTscriptExec"}, 0, "", ""},
        {{"run", "NQCleanup"}, 3, "", "what runs need: [FreeTDS][SQL Server]Invalid object name 'ZpTs"},
        {{"journal", "--db", "NQ2"}, 3, "", "Invalid object name 'ZpTscriptExec'"},
        {{"run", "Drop", "-p", "DROP FUNCTION dbo.GetDateTime"}, 3, "", "the run stays open"},
        {purge, 3, "", "GetDateTime"},
        {{"schema", "check", "NQ2"}, 3, "missing  ZpTscriptExec\nok       ", "tscript schema install NQ2"},
        {{"schema", "check", "Dorvas", "--json"}, 3, "\"state\": \"missing\"", "missing in Dorvas"},
        {{"schema", "install", "NQ2"}, 2, "", "created in NQ2: ZpTscriptExec. Confirmation is needed"},
        {{"schema", "install", "NQ2", "--yes"}, 0, "ok       ZpTscriptExec\n", ""},
        {{"schema", "install", "Dorvas", "--yes"}, 0, "ok       GetDateTime\n", ""},
        {{"schema", "check", "Nope"}, 2, "", "Dorvas, NQ2"},
        {{"run", "Drop", "-p", "ALTER TABLE nq2..ZpTscriptExec DROP COLUMN inputParams"}, 0, "", ""},
        {{"schema", "install", "NQ2", "--yes"}, 3, "ZpTscriptExec: it lacks inputParams text", "by hand"},
        {purge, 0, "Deleted", ""},
        {{"run", "Drop", "-p", "DROP PROCEDURE tsListNodes"}, 0, "", ""},
        {{"exec", "tsListNodes"}, 3, "", "what runs need: Could not find stored procedure 'tsListNodes'"},
        {{"run", "Drop", "-p", "DROP PROCEDURE VT_GetSpParams"}, 0, "", ""},
        {{"params", "tsEventSummary"}, 3, "", "tscript doctor names every procedure"},
        {{"run", "Drop", "-p", "DELETE app_plexum WHERE id = 2"}, 0, "", ""},
        {{"run", "SiteInventory"}, 3, "", "lacks a row that runs need: The statement returned no row"},
        {{"run", "SiteInventory", "--check"}, 3, "which one this is cannot be read", "is bound to a site"},
        {{"run", "Drop", "-p", "DELETE nq2..NQSetting"}, 0, "", ""},
        {{"run", "NQCleanup", "--check"}, 3, "; which one this is cannot be read", "is bound to a site"},
    });
    support::writeFile(m_temp / "tool", "#!/nowhere/sh\n");
    fs::permissions(m_temp / "tool", fs::perms(0700));
    const std::string program = (fs::path(TSCRIPT_PROGRAM).parent_path() / "sqlcmd").string();
    replaceInFile(store(), program, m_temp / "tool");
    expectAll({{{"exec", "tsListNodes"}, 3, "", "cannot run: Cannot start ["}});
}

}  // namespace

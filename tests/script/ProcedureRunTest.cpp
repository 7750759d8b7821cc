#include "steps/ProcedureRun.h"

#include "DVUtilities/TScript.h"
#include "DVUtilities/TScriptRecords.h"
#include "ScriptFixture.h"

namespace {

namespace fs = std::filesystem;

using ProcedureRuns = ScriptFixture;

TEST_F(ProcedureRuns, IsRunExplainedAndListed) {
    const struct {
        const char* name;
        int operation, auditLevel;
        const char *arguments, *recorded;
        const char *text, *ending;  // of the output
        const char* journal;        // the new row, or nothing
    } cases[] = {
        {"tsEventSummary", 1, 1, "@days = 7, @zone = 'north'", nullptr,
         "Events of the last 7 day(s), zone north", "\nTscript Execution Succeeded!",
         "1|0|@days = 7, @zone = 'north'"},
        {"tsEventSummary", 1, 1, nullptr, "by hand", "zone all", "\nTscript Execution Succeeded!",
         "1|0|by hand"},
        {"tseventsummary", 2, 1, nullptr, nullptr, "Changes nothing.",
         "\nTscript Help Information Retrieved!", nullptr},
        {"tsEventSummary", 4, 1, "", "", "@days", "\nTscript Parameter Information Retrieved!", nullptr},
        {"tsListNodes", 1, 0, "", nullptr, "archive-01", "\nTscript Execution Succeeded!", nullptr},
        {"tsSwitchNode", 2, 2, nullptr, nullptr, "Usage:", "\nTscript Help Information Retrieved!", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + std::to_string(c.operation));
        const std::string before = lastRun("tsEventSummary") + runCount();
        const Result result = runProcedure(c.name, c.operation, c.arguments, c.recorded);
        EXPECT_TRUE(result.done);
        EXPECT_NE(result.output.find(c.text), std::string::npos) << result.output;
        EXPECT_EQ(result.output.substr(std::min(result.output.size(), result.output.find(c.ending))),
                  c.ending)
            << result.output;
        EXPECT_EQ(result.auditLevel, c.auditLevel);
        if (c.journal != nullptr) {
            EXPECT_EQ(lastRun("tsEventSummary"), c.journal);
        } else {
            EXPECT_EQ(lastRun("tsEventSummary") + runCount(), before);
        }
    }
}

TEST_F(ProcedureRuns, ReportsWhyItFails) {
    const std::string count = runCount();
    const struct {
        const char* name;
        int operation, auditLevel;
        const char* output;
    } cases[] = {
        {"", 1, 0, "Empty script name! "},
        {"absent", 1, 0, "\nThis is not a permanent tscript.\n"},
        {"x' OR 1=1 --", 1, 0, "\nThis is not a permanent tscript.\n"},
        {"tsSwitchNode", 1, 2, "\nNeed userId input for secured Tscript!\n"},
        {"tsListNodes", 3, 0, "\nInvalid Tscript Operation Type.\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Result result = runProcedure(c.name, c.operation, "1");
        EXPECT_FALSE(result.done);
        EXPECT_EQ(result.output, c.output);
        EXPECT_EQ(result.auditLevel, c.auditLevel);
    }
    EXPECT_EQ(runCount(), count) << "nothing was recorded";
}

TEST_F(ProcedureRuns, AFailedExecutionEndsWithStatusTwo) {
    const Result result = runProcedure("tsEventSummary", 1, "@nosuch = 1");
    EXPECT_FALSE(result.done);
    EXPECT_EQ(
        result.output.find("\nFailed at RunStringQuery_TS! Error: [Failed to execute SQL Script!].\nMsg "),
        0U)
        << result.output;
    EXPECT_EQ(lastRun("tsEventSummary"), "2|0|@nosuch = 1");
}

TEST_F(ProcedureRuns, ASecuredTscriptRunsForAUser) {
    TScript script;
    ASSERT_TRUE(script.isTscriptSP("tsSwitchNode", "dorvas"));
    EXPECT_TRUE(script.execTscript(1, "'spare', 1", nullptr, 7)) << script.getOutput();
    EXPECT_EQ(query("SELECT TOP 1 userId, detail FROM AuditTrail ORDER BY id DESC", 2).front(), "7|spare");
    EXPECT_EQ(query("SELECT TOP 1 userId, tsId FROM ZpTscriptExec ORDER BY id DESC", 2).front().substr(0, 2),
              "7|");
}

// -1 has the bit of a secured script, and is also what a read that fails returns.
TEST_F(ProcedureRuns, AScriptOfUnknownTypeIsNotRun) {
    query("UPDATE ZpTscripts SET type = -1 WHERE name = 'tsSwitchNode' SELECT 1", 1);
    const Result result = runProcedure("tsSwitchNode", 1, "'spare', 1");
    query("UPDATE ZpTscripts SET type = 10 WHERE name = 'tsSwitchNode' SELECT 1", 1);
    EXPECT_FALSE(result.done);
    EXPECT_EQ(result.output, "\nFailed to read whether the tscript is secured.\n");
}

TEST_F(ProcedureRuns, AnEndIsRecordedOnlyAfterAStart) {
    TScript script;
    ASSERT_TRUE(script.isTscriptSP("tsEventSummary", "Dorvas"));
    EXPECT_FALSE(script.recordExecEnd(1));
    EXPECT_STREQ(script.getErrorMessage(),
                 "Failed to record tscript end time because start time is not recorded!");
    EXPECT_TRUE(script.recordExecStart("by hand"));
    EXPECT_EQ(lastRun("tsEventSummary"), "0|0|by hand");
    EXPECT_TRUE(script.recordExecEnd(2));
    EXPECT_EQ(lastRun("tsEventSummary"), "2|0|by hand");
}

TEST_F(ProcedureRuns, RecordsComeInPages) {
    TScriptRecords records;
    std::vector<TScriptEntry_t> entries(1);
    std::vector<TScriptRun_t> runs;
    EXPECT_FALSE(records.listScripts(nullptr, 0, 10, entries));
    EXPECT_TRUE(entries.empty());
    EXPECT_STREQ(records.getErrorMessage(), "No database is open. Call open first.");
    ASSERT_TRUE(records.open("dorvas")) << records.getErrorMessage();
    EXPECT_STREQ(records.getDbName(), "Dorvas");
    EXPECT_FALSE(records.open("Dorvas"));
    EXPECT_STREQ(records.getErrorMessage(),
                 "The database has been chosen already. Use a new object for another one.");
    const std::string wrongPage = "A page has 1 to 10,000 rows.";
    const std::string longPattern = "The name pattern is longer than 256 bytes. Shorten it.";
    const std::tuple<std::size_t, int, std::string> cases[] = {
        {256, 1, ""},   {257, 1, longPattern}, {0, 1, ""},        {0, 0, wrongPage},
        {0, 10000, ""}, {0, 10001, wrongPage}, {0, -1, wrongPage}};
    for (const auto& [pattern, maximum, error] : cases) {
        TScriptRunFilter_t filter;
        filter.namePattern = std::string(pattern, '*');
        entries.resize(1);
        runs.resize(1);
        EXPECT_EQ(records.listScripts(filter.namePattern.c_str(), 0, maximum, entries), error.empty());
        EXPECT_EQ(records.listRuns(filter, 0, maximum, runs), error.empty());
        if (error.empty()) continue;
        EXPECT_EQ(records.getErrorMessage(), error);
        EXPECT_TRUE(entries.empty() && runs.empty());
    }
    EXPECT_TRUE(records.listScripts("tsSwitch*", 0, 10, entries));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].type, kTScriptPermanent | kTScriptSecured);
    EXPECT_EQ(entries[0].creationTime, 1704067200);

    for (const char* input : {"first", "second"}) runProcedure("tsEventSummary", 1, nullptr, input);
    TScriptRunFilter_t filter;
    filter.namePattern = "tsEventSummar?";
    filter.status = 1;
    int beforeId = 0;
    for (const char* input : {"second", "first"}) {
        ASSERT_TRUE(records.listRuns(filter, beforeId, 1, runs) && runs.size() == 1);
        EXPECT_EQ(runs[0].input, input);
        EXPECT_TRUE(runs[0].startTime > 1700000000 && runs[0].endTime >= runs[0].startTime);
        beforeId = runs[0].id;
    }
}

TEST_F(ProcedureRuns, OptionBitsDropTheHeadingOrLeaveTheOutputInItsFile) {
    TScript script;
    ASSERT_TRUE(script.isTscriptSP("tsListNodes", "dorvas"));
    EXPECT_TRUE(ProcedureRun(partsOf(script), 1, nullptr, nullptr, 4).run());
    const std::string output = script.getOutput();
    EXPECT_EQ(output.find("--"), std::string::npos) << output;
    EXPECT_NE(output.find("archive-01"), std::string::npos);

    EXPECT_TRUE(ProcedureRun(partsOf(script), 1, nullptr, nullptr, 8).run());
    EXPECT_EQ(script.getOutput(), output + "\nTscript Execution Succeeded!");
    m_expectedLeftovers = leftovers();
    ASSERT_EQ(m_expectedLeftovers.size(), 1U);
    EXPECT_EQ(support::readFile(m_installation.logFolder() / m_expectedLeftovers[0]).substr(0, 2),
              std::string("i\0", 2));
}

TEST_F(ProcedureRuns, WithoutAnOutputFileTheStartHasNoEnd) {
    TScript script;
    ASSERT_TRUE(script.isTscriptSP("tsEventSummary", "Dorvas"));
    fs::remove_all(m_installation.logFolder());
    EXPECT_FALSE(script.execTscript(1, nullptr, "homeless", 0));
    EXPECT_NE(std::string(script.getOutput()).find("\nFailed to create output File: ["), std::string::npos);
    fs::create_directory(m_installation.logFolder());
    EXPECT_EQ(lastRun("tsEventSummary"), "0|0|homeless");
}

TEST_F(ProcedureRuns, RecognisesPermanentScripts) {
    const struct {
        const char *name, *database;
        bool found;
        const char *foundName, *foundDatabase;
    } cases[] = {
        {"TSEVENTSUMMARY", "dorvas", true, "tsEventSummary", "Dorvas"},  // its id is 1
        {"tsListNodes", "", true, "tsListNodes",
         "Dorvas"},  // several components, the management server's counts
        {"absent", "DORVAS", false, "absent", "Dorvas"},
        {"tsListNodes", "other", false, "tsListNodes", ""},
        {"", "Dorvas", false, "", ""},
    };
    for (const auto& c : cases) {
        std::string name = c.name, database = c.database;
        EXPECT_EQ(TS_IsTscriptSP(&name, &database), c.found) << c.name;
        EXPECT_EQ(name, c.foundName);
        EXPECT_EQ(database, c.foundDatabase);
    }
}

TEST_F(ProcedureRuns, ChoosesItsDatabaseOnce) {
    m_installation.set("Base", "nPLATTYPE", 4);
    TScript script;
    ASSERT_TRUE(script.initialize("tsListNodes"));
    EXPECT_FALSE(script.setDbAndLog(nullptr));
    EXPECT_STREQ(script.getErrorMessage(), "Please provide database name because multiple databases exist.");
    for (const char* number : {"808", "809", "810"}) {
        m_installation.remove(std::string("InstalledPackages\\") + number, "sInstallState");
    }
    EXPECT_FALSE(script.setDbAndLog("")) << "the companion's catalogue has no such script";
    EXPECT_STREQ(script.getDbName(), "NQ2");
    EXPECT_TRUE(script.setDbAndLog("nonsense"));
    EXPECT_STREQ(script.getDbName(), "NQ2");
}

TEST_F(ProcedureRuns, AFailedLookUpCountsAsFound) {
    TScript script;
    ASSERT_TRUE(script.initialize("tsListNodes"));
    m_installation.useServer("127.0.0.1,1", "nobody", "x");
    EXPECT_FALSE(script.setDbAndLog("Dorvas"));
    EXPECT_TRUE(script.getTscriptId());
    EXPECT_FALSE(script.isTscriptSP("tsListNodes", "Dorvas"));
    EXPECT_FALSE(script.execTscript(2, nullptr, nullptr, 0));
    EXPECT_STREQ(script.getErrorMessage(), "Invalid tscript name!");
}

TEST_F(ProcedureRuns, AnObjectWithoutASessionRefusesToWork) {
    TScript script;
    EXPECT_FALSE(script.initialize(nullptr));
    EXPECT_STREQ(script.getErrorMessage(), "Empty script name! ");
    EXPECT_FALSE(script.setSQLFile("x") || script.setDbAndLog("Dorvas") || script.getTscriptId() ||
                 script.executeSQLFile({}, nullptr) || script.execTscript(1, nullptr, nullptr, 0) ||
                 script.recordExecStart("") || script.recordExecEnd(1) || script.addNewTscript());
    EXPECT_TRUE(script.checkPlexumId() && script.checkGUID()) << "bound to no site";
    EXPECT_STREQ(script.getSQLFile(), "");
    m_installation.remove("Dorvase", "sDVHOSTNAME");
    EXPECT_FALSE(script.initialize("any") || script.executeSQLFile({}, nullptr));
    EXPECT_EQ(std::string(script.getErrorMessage()).find("The script session is not initialized."), 0U);
}

TEST_F(ProcedureRuns, ExportedFunctionsTakeNullAddresses) {
    std::string text;
    int level = 0;
    EXPECT_FALSE(TS_IsTscriptSP(nullptr, &text) || TS_IsTscriptSP(&text, nullptr));
    EXPECT_FALSE(TS_ExecTscript_SP("tsListNodes", "Dorvas", "", "", 1, nullptr, &text, &level));
    EXPECT_FALSE(TS_ExecTscript_SP("tsListNodes", "Dorvas", "", "", 1, &text, nullptr, &level));
    EXPECT_FALSE(TS_ExecTscript_SP("tsListNodes", "Dorvas", "", "", 1, &text, &text, nullptr));
    EXPECT_FALSE(TS_ExecTscript_SP(nullptr, nullptr, nullptr, nullptr, 1, &text, &text, &level));
    EXPECT_FALSE(TS_ExecTscript_SQL(nullptr, &text, nullptr, nullptr, 1, &text, &text));
    EXPECT_FALSE(TS_ExecTscript_SQL("x", nullptr, nullptr, nullptr, 1, &text, &text));
    EXPECT_FALSE(TS_ExecTscript_SQL("x", &text, nullptr, nullptr, 1, nullptr, &text));
    EXPECT_FALSE(TS_ExecTscript_SQL("x", &text, nullptr, nullptr, 1, &text, nullptr));
    EXPECT_FALSE(TS_ExecTscript_SQL_In("x", nullptr, nullptr, nullptr, &text, &text));
    EXPECT_FALSE(TS_ExecTscript_SQL_In("x", &text, nullptr, nullptr, nullptr, &text));
    EXPECT_FALSE(TS_ExecTscript_SQL_In("x", &text, nullptr, nullptr, &text, nullptr));
    EXPECT_FALSE(TS_PreviewTscript_SQL("x", nullptr, nullptr, &text, &text));
    EXPECT_FALSE(TS_PreviewTscript_SQL("x", &text, nullptr, nullptr, &text));
    EXPECT_FALSE(TS_PreviewTscript_SQL("x", &text, nullptr, &text, nullptr));
    EXPECT_FALSE(TS_PreviewTscript_SP("x", nullptr, nullptr, &text));
    EXPECT_FALSE(TS_PreviewTscript_SP("x", nullptr, &text, nullptr));
    std::string log, error, database;
    EXPECT_FALSE(TS_ExecTscript_SQL_In(nullptr, &database, nullptr, nullptr, &log, &error));
    EXPECT_EQ(error, "Empty script name! ");
    EXPECT_FALSE(TS_PreviewTscript_SQL(nullptr, &database, nullptr, &text, &error));
    EXPECT_EQ(error, "Empty script name! ");
    EXPECT_FALSE(TS_PreviewTscript_SP(nullptr, nullptr, &text, &error));
    EXPECT_EQ(error, "Empty script name! ");
    EXPECT_TRUE(TS_PreviewTscript_SP("tsListNodes", nullptr, &text, &error));
}

}  // namespace

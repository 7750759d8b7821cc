// TScript and the TS_ functions.
#include <DVUtilities/TScript.h>
#include <DVUtilities/TScriptApi.h>
#include <DVUtilities/TScriptRecords.h>

#include <string>
#include <vector>

#include "Check.h"

namespace {

void checkPackageObject(Checks& checks) {
    TScript script;
    CHECK(script.initialize("PurgeEvents"));
    CHECK(contains(script.getSQLFile(), "/Scripts/PurgeEvents.sql"));
    CHECK(script.setSQLFile(nullptr));
    CHECK(script.checkPlexumId() && script.checkGUID() && script.addNewTscript() && script.getTscriptId());
    std::string help;
    script.getSQLFileHelp(help);
    CHECK(contains(help, "Usage:\n") && contains(help, script.getUsage()));
    CHECK(contains(help, script.getDescription()) && contains(help, script.getCreation()));
    CHECK(script.executeSQLFile({"3650", "1"}, nullptr));
    CHECK(std::string(script.getScriptName()) == "PurgeEvents" &&
          std::string(script.getDbName()) == "Dorvas");
    CHECK(contains(script.getLogFile(), "Tscript.log") && script.getAuditLevel() == 0);
    CHECK(std::string(script.getErrorMessage()) == "Tscript Execution Succeeded!");
    CHECK(!script.isTscriptSP("PurgeEvents", nullptr));  // it came from a package
}

void checkProcedureObject(const std::string& procedure, Checks& checks) {
    TScript script;
    CHECK(script.isTscriptSP(procedure.c_str(), "Dorvas"));
    CHECK(script.setDbAndLog("Dorvas") && script.recordExecStart("by hand") && script.recordExecEnd(1));
    CHECK(script.execTscript(2, nullptr, nullptr, 0));
    CHECK(contains(script.getOutput(), "Tscript Help Information Retrieved!"));
}

void checkFunctions(const std::string& procedure, Checks& checks) {
    std::string name = procedure;
    std::string db = "dorvas";
    CHECK(TS_IsTscriptSP(&name, &db) && db == "Dorvas");
    std::string log;
    std::string output;
    int audit = -1;
    CHECK(TS_ExecTscript_SP(procedure.c_str(), "dorvas", nullptr, nullptr, 4, &log, &output, &audit));
    CHECK(contains(output, "TScript Parameter(s):") && audit >= 0 && !log.empty());
    const std::vector<std::string> parameters{"3650", "1"};
    CHECK(TS_ExecTscript_SQL("PurgeEvents", &db, &parameters, "consumer", 1, &log, &output));
    CHECK(contains(output, "Tscript Execution Succeeded!"));
    CHECK(!TS_ExecTscript_SQL("NoSuchPackage", &db, &parameters, nullptr, 1, &log, &output));
    CHECK(contains(output, "TScript file not found!"));
}

void checkRecords(Checks& checks) {
    TScriptRecords records;
    std::vector<TScriptEntry_t> entries;
    CHECK(!records.listScripts(nullptr, 0, 10, entries) && contains(records.getErrorMessage(), "Call open"));
    CHECK(records.open("dorvas") && std::string(records.getDbName()) == "Dorvas");
    CHECK(records.listScripts("tsSwitch*", 0, 10, entries) && entries.size() == 1);
    CHECK((entries.at(0).type & kTScriptSecured) != 0 && entries.at(0).name == "tsSwitchNode");
    TScriptRunFilter_t filter;
    filter.namePattern = "PurgeEvent?";
    filter.status = 1;
    std::vector<TScriptRun_t> runs;
    CHECK(records.listRuns(filter, 0, 1, runs) && runs.size() == 1);
    const TScriptRun_t newest = runs.at(0);
    CHECK(newest.input == "consumer" && newest.startTime > 1700000000 && newest.endTime >= newest.startTime);
    CHECK(records.listRuns(filter, newest.id, 1, runs) && runs.at(0).id < newest.id);
    CHECK(!records.listRuns(filter, 0, 0, runs) && runs.empty());
}

void checkPreviews(Checks& checks) {
    std::string db = "nq2";
    std::string sql;
    std::string error;
    std::string log;
    const std::vector<std::string> parameters{"3650", "1"};
    CHECK(!TS_PreviewTscript_SQL("PurgeEvents", &db, &parameters, &sql, &error));
    CHECK(contains(error, "made for the database [Dorvas]"));
    CHECK(!TS_ExecTscript_SQL_In("PurgeEvents", &db, &parameters, nullptr, &log, &error) && db == "nq2");
    db.clear();
    CHECK(TS_PreviewTscript_SQL("PurgeEvents", &db, &parameters, &sql, &error) && db == "Dorvas");
    CHECK(contains(sql, "SET ARITHABORT ON") && contains(sql, "3650"));
    CHECK(TS_ExecTscript_SQL_In("PurgeEvents", &db, &parameters, nullptr, &log, &error));
    CHECK(TS_PreviewTscript_SP("tsEventSummary", "@days = 7", &sql, &error));
    CHECK(contains(sql, "EXEC tsEventSummary @days = 7"));
}

}  // namespace

void checkScripts(const Site&, Checks& checks) {
    const std::string procedure = "tsEventSummary";
    checkPackageObject(checks);
    checkProcedureObject(procedure, checks);
    checkFunctions(procedure, checks);
    checkRecords(checks);
    checkPreviews(checks);
}

// TScript and the TS_ functions.
#include <DVUtilities/TScript.h>
#include <DVUtilities/TScriptApi.h>

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
    CHECK(std::string(script.getScriptName()) == "PurgeEvents" && std::string(script.getDbName()) == "Dorvas");
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

}  // namespace

void checkScripts(const Site&, Checks& checks) {
    const std::string procedure = "tsEventSummary";
    checkPackageObject(checks);
    checkProcedureObject(procedure, checks);
    checkFunctions(procedure, checks);
}

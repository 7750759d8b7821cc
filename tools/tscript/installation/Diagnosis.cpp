#include "installation/Diagnosis.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "installation/Installation.h"
#include "system/ScratchFile.h"

namespace {

using Finder = Diagnosis (*)(const std::string& script, const std::string& database);

Diagnosis notRun(ExitCode code, std::string what, std::string advice) {
    return {code, std::move(what), std::move(advice), false};
}

bool holdsLine(std::string_view text, std::string_view beginning) {
    for (std::size_t at = text.find(beginning); at != std::string_view::npos;
         at = text.find(beginning, at + 1))
        if (at == 0 || text[at - 1] == '\n') return true;
    return false;
}

// ---- The query tool ------------------------------------------------------------------------------------

constexpr const char* kDefaultTool = "/opt/mssql-tools/bin/sqlcmd";

bool toolStarts() {
    return access(queryToolPath().c_str(), X_OK) == 0;
}

Diagnosis toolMissing() {
    return notRun(ExitCode::kInstallation, "the query tool " + queryToolPath() + " cannot be started",
                  "Give the path of sqlcmd under [host.programs] in the store.");
}

Diagnosis queryFailed(const std::string&, const std::string&) {
    if (!toolStarts()) return toolMissing();
    return {ExitCode::kScriptFailed, "the script failed", "The server's message stands in the output.", true};
}

// ---- Packages ------------------------------------------------------------------------------------------

Diagnosis packageMissing(const std::string& script, const std::string&) {
    const std::string file = packageFile(script).string();
    std::string name = script;
    std::string database;
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored) && TS_IsTscriptSP(&name, &database))
        return notRun(ExitCode::kUsage, "'" + script + "' is a stored procedure, not a package",
                      "Run it with: tscript exec " + script);
    return notRun(ExitCode::kInstallation, "there is no package " + file + ", or it may not be read",
                  "tscript pack makes one from plain text.");
}

Diagnosis packageUnreadable(const std::string& script, const std::string&) {
    std::string error;
    const std::string file = packageFile(script).string();
    if (DecryptFile(file.c_str(), "/dev/null", error))
        return notRun(ExitCode::kInstallation, "the plain copy of " + file + " could not be written",
                      "Is the temporary folder (dZEPHRATEMPDIR) there, writable and not full?");
    return notRun(ExitCode::kInstallation, "package " + file + ": " + explainCipherError(error), {});
}

// ---- Databases -----------------------------------------------------------------------------------------

// Asks the server through the query tool, whose output carries the server's own words.
Diagnosis diagnoseServer(DBBase& db, const SuiteDatabase& database) {
    if (!toolStarts()) return toolMissing();
    const ScratchFile output;
    if (db.RunStringQuery("SELECT 1", output.path().c_str(), database.name))
        return notRun(ExitCode::kConnection,
                      std::string("the direct connection to ") + database.name + " fails",
                      "sqlcmd gets through with the same login: look at odbcDriver and odbcAttributes in the "
                      "store, and at the debug log for the driver's message.");
    const std::string words = output.content();
    if (words.find("Login failed") != std::string::npos)
        return notRun(ExitCode::kRefused, "the server refuses the login:\n" + words,
                      std::string("Set the credentials again: tscript credentials set ") + database.name +
                          " --user USER");
    return notRun(ExitCode::kConnection,
                  std::string("the server of ") + database.name + " cannot be reached:\n" + words,
                  std::string("Is it running, and does ") + database.instance + " in the store name it?");
}

Diagnosis databaseUnreachable(const std::string&, const std::string& database) {
    return diagnoseDatabase(database);
}

// ---- From texts to findings ----------------------------------------------------------------------------

struct Finding {
    const char* text;  // how a line of the output begins
    Finder find;
};

template <ExitCode code>
Diagnosis told(const std::string&, const std::string&) {
    return notRun(code, "the script did not run", {});
}

Diagnosis notRecorded(const std::string&, const std::string&) {
    return notRun(ExitCode::kConnection, "the script did not run",
                  "The debug log beside " + sessionLogFile().string() + " holds the server's message.");
}

// The first text that the output holds decides.
constexpr Finding kFindings[] = {
    {"Failed at RunFileQuery_TS!", queryFailed},
    {"Failed at RunStringQuery_TS!", queryFailed},
    {"Failed to get machine name.",
     [](const std::string&, const std::string&) {
         return notRun(ExitCode::kInstallation, "the store does not name this host",
                       "Give the host's name as sDVHOSTNAME under [Instance001.Dorvase].");
     }},
    {"TScript file not found!", packageMissing},
    {"Failed to decrypt script file.", packageUnreadable},
    {"Failed to open decrypted script file.", packageUnreadable},
    {"Failed to get database access info.", databaseUnreachable},
    {"The package is made for the database", told<ExitCode::kUsage>},
    {"Invalid db name", told<ExitCode::kUsage>},
    {"Please provide database name", told<ExitCode::kUsage>},
    {"This is not a permanent tscript.",
     [](const std::string&, const std::string&) {
         return notRun(ExitCode::kUsage, "the catalogue has no stored-procedure script of that name",
                       "A package is run with tscript run.");
     }},
    {"This site specific tscript", told<ExitCode::kRefused>},
    {"Need userId input for secured Tscript!",
     [](const std::string&, const std::string&) {
         return notRun(ExitCode::kRefused, "the script is secured and runs for a known user only",
                       "Run it from the suite's own programs.");
     }},
    {"Failed to get plexum number", told<ExitCode::kConnection>},
    {"Failed to get GUID", told<ExitCode::kConnection>},
    {"Failed to insert tscript", notRecorded},
    {"Failed to update tscript", notRecorded},
    {"Failed to record tscript", notRecorded},
    {"Failed to get zephra base folder.", told<ExitCode::kInstallation>},
    {"Failed to open file [", told<ExitCode::kInstallation>},
    {"Failed to create output File", told<ExitCode::kInstallation>},
    {"Invalid tscript name!", told<ExitCode::kUsage>},
};

}  // namespace

std::string queryToolPath() {
    const std::map<std::string, std::string> programs = hostlayer::inspectStore().programs;
    const auto mapped = programs.find("sqlcmd");
    return mapped == programs.end() ? kDefaultTool : mapped->second;
}

void requireQueryTool() {
    if (toolStarts()) return;
    const Diagnosis missing = toolMissing();
    throw Failure(missing.code, missing.what, missing.advice);
}

std::string explainCipherError(const std::string& errorText) {
    const std::size_t mark = errorText.rfind("error [");
    if (mark == std::string::npos) return errorText;
    return hostlayer::cipherErrorText(std::strtol(errorText.c_str() + mark + 7, nullptr, 10));
}

Diagnosis diagnoseRun(const std::string& script, const std::string& database, const std::string& output) {
    for (const Finding& finding : kFindings)
        if (holdsLine(output, finding.text)) return finding.find(script, database);
    return {ExitCode::kScriptFailed, "the script failed", {}, true};
}

Diagnosis diagnoseDatabase(const std::string& name) {
    const SuiteDatabase& database = suiteDatabase(name.empty() ? "Dorvas" : name);
    std::string machine;
    std::string instance;
    if (!DVUtilLib("tscript", false).GetMachineName(machine, instance))
        return diagnoseRun({}, name, "Failed to get machine name.");
    DBBase db(false);
    const std::string log = sessionLogFile().string();
    if (db.GetAccountInfo(machine.c_str(), instance.c_str(), log.c_str(), database.name))
        return notRun(ExitCode::kConnection, "the database could not be reached, and now it can",
                      "Try again.");
    const std::string reason = db.getErrorMsg();
    std::string error;
    const bool pastSettings = reason.rfind("GetDBUser failed", 0) == 0;
    if (pastSettings && !db.GetDBUser(instance.c_str(), database.name, error) && error.empty())
        return diagnoseServer(db, database);
    return notRun(ExitCode::kInstallation, error.empty() ? reason : error,
                  std::string("Look at [Instance001.Database] in the store; credentials are set by tscript "
                              "credentials set ") +
                      database.name + " --user USER.");
}

#include "installation/Diagnosis.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "installation/Account.h"
#include "installation/Installation.h"
#include "system/ScratchFile.h"

namespace {

using Diagnose = Diagnosis (*)(const std::string& script, const std::string& database);

Diagnosis notRun(ExitCode code, std::string what, std::string advice) {
    return {code, std::move(what), std::move(advice), false};
}

bool hasLineStartingWith(std::string_view text, std::string_view start) {
    for (std::size_t at = text.find(start); at != std::string_view::npos; at = text.find(start, at + 1))
        if (at == 0 || text[at - 1] == '\n') return true;
    return false;
}

// ---- The query tool ------------------------------------------------------------------------------------

constexpr const char* kDefaultTool = "/opt/mssql-tools/bin/sqlcmd";

bool isToolExecutable() {
    return access(queryToolPath().c_str(), X_OK) == 0;
}

Diagnosis toolMissing() {
    return notRun(ExitCode::kInstallation, "the query tool " + queryToolPath() + " cannot be started",
                  "Set the path of sqlcmd under [host.programs] in the store.");
}

Diagnosis queryFailed(const std::string&, const std::string&) {
    if (!isToolExecutable()) return toolMissing();
    return {ExitCode::kScriptFailed, "the script failed", "See the server's message in the output.", true};
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
    return notRun(ExitCode::kInstallation, "there is no package " + file + ", or it cannot be read",
                  "tscript pack creates one from plain text.");
}

Diagnosis packageUnreadable(const std::string& script, const std::string&) {
    std::string error;
    const std::string file = packageFile(script).string();
    if (DecryptFile(file.c_str(), "/dev/null", error))
        return notRun(ExitCode::kInstallation, "the plain copy of " + file + " could not be written",
                      "Does the temporary folder (dZEPHRATEMPDIR) exist, and is it writable and not full?");
    return notRun(ExitCode::kInstallation, "package " + file + ": " + explainCipherError(error), {});
}

// ---- Databases -----------------------------------------------------------------------------------------

// Reports the causes of the failed connection: DBBase::RunStringQuery() always logs in with name and
// password.
Diagnosis diagnoseWindowsLogin(const DBBase& db, const SuiteDatabase& database) {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    bool isRefused = false;
    std::string what = std::string("Windows authentication to ") + database.name + " fails:";
    for (const DVUCause_t& cause : causes) {
        isRefused = isRefused || cause.serverError != 0;
        what += "\n" + cause.text;
    }
    return notRun(isRefused ? ExitCode::kRefused : ExitCode::kConnection, what,
                  "See \"Windows authentication\" in docs/troubleshooting.md.");
}

Diagnosis diagnoseServer(DBBase& db, const SuiteDatabase& database) {
    if (!isToolExecutable()) return toolMissing();
    if (usesWindowsAuthentication(database)) return diagnoseWindowsLogin(db, database);
    if (const std::optional<Diagnosis> diagnosis = diagnoseStoredLogin(db, database)) return *diagnosis;
    return notRun(
        ExitCode::kConnection, std::string("the direct connection to ") + database.name + " fails",
        "sqlcmd connects with the same login: check odbcDriver and odbcAttributes in the store, and "
        "see the driver's message in the debug log.");
}

Diagnosis databaseUnreachable(const std::string&, const std::string& database) {
    return diagnoseDatabase(database);
}

// ---- Table of the library's messages
// ----------------------------------------------------------------------------

struct KnownMessage {
    const char* lineStart;  // of a line of the output
    Diagnose diagnose;
};

template <ExitCode code>
Diagnosis didNotRun(const std::string&, const std::string&) {
    return notRun(code, "the script did not run", {});
}

Diagnosis notRecorded(const std::string&, const std::string&) {
    return notRun(ExitCode::kConnection, "the script did not run",
                  "See the server's message in the debug log beside " + sessionLogFile().string() + ".");
}

// In order: the first entry that matches a line of the output applies.
constexpr KnownMessage kMessages[] = {
    {"Failed at RunFileQuery_TS!", queryFailed},
    {"Failed at RunStringQuery_TS!", queryFailed},
    {"Failed to get machine name.",
     [](const std::string&, const std::string&) {
         return notRun(ExitCode::kInstallation, "the store does not name this host",
                       "Set the host's name as sDVHOSTNAME under [Instance001.Dorvase].");
     }},
    {"TScript file not found!", packageMissing},
    {"Failed to decrypt script file.", packageUnreadable},
    {"Failed to open decrypted script file.", packageUnreadable},
    {"Failed to get database access info.", databaseUnreachable},
    {"The values are refused: ",
     [](const std::string&, const std::string&) {
         return notRun(ExitCode::kUsage, "a value is not filled in as it is",
                       "--allow-tool-commands accepts it; only for values that you trust.");
     }},
    {"The package is made for the database", didNotRun<ExitCode::kUsage>},
    {"Invalid db name", didNotRun<ExitCode::kUsage>},
    {"Please provide database name", didNotRun<ExitCode::kUsage>},
    {"This is not a permanent tscript.",
     [](const std::string&, const std::string&) {
         return notRun(ExitCode::kUsage, "the catalogue has no stored-procedure script of that name",
                       "A package is run with tscript run.");
     }},
    {"This site specific tscript", didNotRun<ExitCode::kRefused>},
    {"Need userId input for secured Tscript!",
     [](const std::string&, const std::string&) {
         return notRun(ExitCode::kRefused, "the script is secured and runs for a known user only",
                       "Run it from the suite's own programs.");
     }},
    {"Failed to get plexum number", didNotRun<ExitCode::kConnection>},
    {"Failed to get GUID", didNotRun<ExitCode::kConnection>},
    {"Failed to insert tscript", notRecorded},
    {"Failed to update tscript", notRecorded},
    {"Failed to record tscript end",
     [](const std::string&, const std::string&) {
         return Diagnosis{ExitCode::kConnection, "the script has run, but its end could not be recorded",
                          "Do not run it again before you know what it did.", /*scriptRan=*/true};
     }},
    {"Failed to record tscript", notRecorded},
    {"Failed to get zephra base folder.", didNotRun<ExitCode::kInstallation>},
    {"Failed to open file [", didNotRun<ExitCode::kInstallation>},
    {"Failed to create output File", didNotRun<ExitCode::kInstallation>},
    {"Invalid tscript name!", didNotRun<ExitCode::kUsage>},
};

}  // namespace

bool usesWindowsAuthentication(const SuiteDatabase& database) {
    constexpr unsigned int kWindowsAuthentication = 1;
    unsigned int setting = 0;
    std::string ignored;
    const std::string ownName = std::string("nSQLAuthType_") + database.name;
    // The database's own setting takes precedence, as in the library.
    for (const std::string& name : {ownName, std::string("nSQLAuthType")})
        if (GetRegistryItemValue("", "Database", name.c_str(), &setting, nullptr, ignored)) break;
    return setting == kWindowsAuthentication;
}

// Connects through the query tool: unlike the library it prints the server's message.
std::optional<Diagnosis> diagnoseStoredLogin(DBBase& db, const SuiteDatabase& database) {
    const ScratchFile output;
    if (db.RunStringQuery("SELECT 1", output.path().c_str(), database.name)) return std::nullopt;
    const std::string message = output.content();
    if (message.find("Login failed") != std::string::npos)
        return notRun(ExitCode::kRefused, "the server refuses the login:\n" + message,
                      std::string("Set the credentials again: tscript credentials set ") + database.name +
                          " --user USER");
    return notRun(ExitCode::kConnection,
                  std::string("the server of ") + database.name + " cannot be reached:\n" + message,
                  std::string("Is it running, and does ") + database.instance + " in the store name it?");
}

std::string queryToolPath() {
    const std::map<std::string, std::string> programs = hostlayer::inspectStore().programs;
    const auto mapped = programs.find("sqlcmd");
    return mapped == programs.end() ? kDefaultTool : mapped->second;
}

void requireQueryTool() {
    if (isToolExecutable()) return;
    throw toolMissing().failure();
}

std::string explainCipherError(const std::string& errorText) {
    constexpr std::string_view kBeforeNumber = "error [";
    const std::size_t at = errorText.rfind(kBeforeNumber);
    if (at == std::string::npos) return errorText;
    return hostlayer::cipherErrorText(
        std::strtol(errorText.c_str() + at + kBeforeNumber.size(), nullptr, 10));
}

Diagnosis diagnoseRun(const std::string& script, const std::string& database, const std::string& output) {
    for (const KnownMessage& message : kMessages)
        if (hasLineStartingWith(output, message.lineStart)) return message.diagnose(script, database);
    return {ExitCode::kScriptFailed, "the script failed", {}, true};
}

Diagnosis diagnoseDatabase(const std::string& name) {
    const SuiteDatabase& database = suiteDatabase(name.empty() ? "Dorvas" : name);
    const std::optional<HostNames> host = configuredHost();
    if (!host) return diagnoseRun({}, name, "Failed to get machine name.");
    DBBase db(/*flag=*/false);
    if (openAccount(db, database))
        return notRun(ExitCode::kConnection, "the database could not be reached, and now it can",
                      "Try again.");
    const std::string reason = db.getErrorMsg();
    std::string error;
    const bool hasSettings = reason.starts_with("GetDBUser failed");
    if (hasSettings && !db.GetDBUser(host->instance.c_str(), database.name, error) && error.empty())
        return diagnoseServer(db, database);
    return notRun(
        ExitCode::kInstallation, error.empty() ? reason : error,
        std::string("Check [Instance001.Database] in the store. To set the credentials: tscript credentials "
                    "set ") +
            database.name + " --user USER.");
}

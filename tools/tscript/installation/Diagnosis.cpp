#include "installation/Diagnosis.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/commonFunc.h"
#include "HostSettings.h"
#include "HostSetup.h"
#include "installation/Account.h"
#include "installation/CipherKey.h"
#include "installation/Installation.h"
#include "installation/ToolLimit.h"
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

bool isToolExecutable() {
    const std::string tool = hostlayer::queryToolPath();
    return tool.find('/') != std::string::npos && access(tool.c_str(), X_OK) == 0;
}

Diagnosis toolMissing() {
    return notRun(ExitCode::kInstallation,
                  "the query tool " + hostlayer::queryToolPath() + " cannot be started",
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
    const auto status = std::filesystem::symlink_status(file, ignored);
    const bool isPlain =
        std::filesystem::is_regular_file(status) && std::filesystem::hard_link_count(file, ignored) == 1;
    if (std::filesystem::exists(status) && !isPlain)
        return notRun(ExitCode::kInstallation,
                      file + " is a link, no regular file, or a file with a second name",
                      "Put a copy of the package in its place.");
    return notRun(ExitCode::kInstallation, "there is no package " + file + ", or it cannot be read",
                  "tscript pack creates one from plain text.");
}

Diagnosis packageUnreadable(const std::string& script, const std::string&) {
    std::string error;
    const std::string file = packageFile(script).string();
    if (DecryptFile(file.c_str(), "/dev/null", error))
        return notRun(ExitCode::kInstallation, "the plain copy of " + file + " could not be written",
                      "Does the folder " + folderOfRuns() + " exist, and is it writable and not full?");
    return notRun(ExitCode::kInstallation, "package " + file + ": " + explainCipherError(error), {});
}

// ---- Databases -----------------------------------------------------------------------------------------

constexpr const char* kRefusedLogin = "Login failed";
constexpr const char* kNoDatabase =
    "Cannot open database";  // the server reports it as a refused login as well

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// Messages of the driver about the last connection; empty if that was not what failed.
std::string driverMessage(const DBBase& db) {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    std::string text;
    for (const DVUCause_t& cause : causes)
        if (cause.where == kDVUConnection) text += (text.empty() ? "" : "\n") + cause.text;
    return text;
}

// What the query tool wrote to standard error, or how it ended.
std::string toolCause(const DBBase& db) {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    for (const DVUCause_t& cause : causes)
        if (cause.where == kDVUQueryTool) return cause.text;
    return "the query tool does not connect";
}

// A second opinion: FreeTDS's ODBC driver has one message for most failures of a connection. Empty if the
// tool connects, nothing if it cannot be asked.
std::optional<std::string> toolMessage(DBBase& db, const SuiteDatabase& database) {
    if (!isToolExecutable()) return std::nullopt;
    try {
        const ScratchFile output;
        ToolLimit limit;
        const bool isConnected = db.RunStringQuery("SELECT 1", output.path().c_str(), database.name);
        if (limit.expired()) return limit.text();
        if (isConnected) return std::string();
        const std::string message = output.content();
        return message.empty() ? toolCause(db) : message;
    } catch (const Failure&) {
        return std::nullopt;  // no file can be created in TMPDIR
    }
}

// Whether the host layer has found the reason, which precedes the driver's messages: those begin with names
// in brackets. The query tool would wait for the same server once more.
bool isExplained(std::string_view direct) {
    return !direct.empty() && direct.front() != '[';
}

bool isRefusal(std::string_view message) {
    return contains(message, kRefusedLogin) || contains(message, kNoDatabase);
}

std::string adviceOnServer(const SuiteDatabase& database, std::string_view message) {
    for (const char* word : {"certificate", "encryption", "TLS"})
        if (contains(message, word)) return "docs/sql-server.md, Reasons, says what to do.";
    const std::string server = storeText("Database", database.instance);
    const bool isPortUnknown = contains(server, "\\") && !contains(server, ",");
    if (isPortUnknown)
        return std::string("Does the browser service of its host answer (UDP port 1434)? Without it: ") +
               "tscript config set Database." + database.instance + " HOST,PORT";
    return std::string("Is it running, and does ") + database.instance + " in the store name it?";
}

Diagnosis serverUnreachable(const SuiteDatabase& database, const std::string& message) {
    return notRun(ExitCode::kConnection,
                  std::string("the server of ") + database.name + " cannot be reached:\n" + message,
                  adviceOnServer(database, message));
}

Diagnosis serverRefused(const SuiteDatabase& database, const std::string& message) {
    if (contains(message, kNoDatabase))
        return notRun(ExitCode::kRefused, "the server does not open the database:\n" + message,
                      "Create or restore the database, or let the login use it.");
    return notRun(
        ExitCode::kRefused, "the server refuses the login:\n" + message,
        std::string("Set the credentials again: tscript credentials set ") + database.name + " --user USER");
}

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
    if (const std::optional<Diagnosis> fault = serverNameFault(database)) return *fault;
    if (usesWindowsAuthentication(database)) return diagnoseWindowsLogin(db, database);
    const std::string direct = driverMessage(db);
    if (isRefusal(direct)) return serverRefused(database, direct);
    if (isExplained(direct)) return serverUnreachable(database, direct);
    const std::optional<std::string> tool = toolMessage(db, database);
    if (tool && tool->empty())
        return notRun(
            ExitCode::kConnection,
            std::string("the direct connection to ") + database.name + " fails:\n" + direct,
            "sqlcmd connects with the same login: check odbcDriver and odbcAttributes in the store.");
    const std::string message = tool ? direct + "\n" + *tool : direct;
    if (isRefusal(message)) return serverRefused(database, message);
    return serverUnreachable(database, message);
}

// The probe statement or the host layer failed: the server accepted the login.
Diagnosis statementFailed(const DBBase& db, const SuiteDatabase& database) {
    std::vector<DVUCause_t> causes;
    DVU_GetCauses(db, causes);
    const std::string reason = causes.empty() ? db.getErrorMsg() : causes.front().text;
    return notRun(
        ExitCode::kInstallation, std::string("the probe statement fails in ") + database.name + ": " + reason,
        "Install the suite's schema in this database, or grant the login the right that is missing.");
}

std::string settingsAdvice(const SuiteDatabase& database, const std::string& reason) {
    if (contains(reason, "not installed") || contains(reason, "not a Dorvaser"))
        return "Its component is not installed here: tscript doctor shows the components and how to set one.";
    if (contains(reason, "SQL Server name"))
        return std::string("Set it: tscript config set Database.") + database.instance + " HOST,PORT";
    return std::string(
               "Check [Instance001.Database] in the store. To set the credentials: tscript credentials "
               "set ") +
           database.name + " --user USER.";
}

Diagnosis databaseUnreachable(const std::string&, const std::string& database) {
    return diagnoseDatabase(database);
}

// ---- Table of the library's messages ------------------------------------------------------------------

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
    {"Failed to read whether the tscript is secured.", didNotRun<ExitCode::kConnection>},
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

std::optional<Diagnosis> diagnoseStoredLogin(DBBase& db, const SuiteDatabase& database) {
    const std::optional<std::string> message = toolMessage(db, database);
    if (!message || message->empty()) return std::nullopt;
    if (isRefusal(*message)) return serverRefused(database, *message);
    return serverUnreachable(database, *message);
}

bool hasSilentTool(const std::vector<DVUCause_t>& causes) {
    return std::any_of(causes.begin(), causes.end(), [](const DVUCause_t& cause) {
        return cause.where == kDVUQueryTool && cause.exitCode == 0;
    });
}

Diagnosis silentTool() {
    return notRun(
        ExitCode::kInstallation,
        "the query tool " + hostlayer::queryToolPath() + " ended with exit code 0, but wrote no output",
        "Is it sqlcmd? Set its path under [host.programs] in the store.");
}

bool hasCutOutput(const std::vector<DVUCause_t>& causes) {
    const std::string records = hostlayer::hostSetting("runRecords", "");  // a run does without its record
    return std::any_of(causes.begin(), causes.end(), [&](const DVUCause_t& cause) {
        return cause.where == kDVUFile && cause.subject != records;
    });
}

Diagnosis cutOutput() {
    return {ExitCode::kInstallation, "the script has run, but its output could not be read to the end",
            "Check the disk of the log folder. The journal has the run as succeeded."};
}

std::optional<Diagnosis> serverNameFault(const SuiteDatabase& database) {
    const std::string server = storeText("Database", database.instance);
    if (server.find_first_of(" \t\"") == std::string::npos) return std::nullopt;
    return notRun(
        ExitCode::kInstallation,
        std::string("Database.") + database.instance + " ('" + server + "') holds a blank or a quote",
        std::string("Set host, host\\instance or host,port: tscript config set Database.") +
            database.instance + " SERVER");
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
    if (hasSettings && !driverMessage(db).empty()) return diagnoseServer(db, database);
    if (hasSettings && !db.GetDBUser(host->instance.c_str(), database.name, error) && error.empty())
        return statementFailed(db, database);
    const std::string text = error.empty() ? reason : error;
    const std::string problem = contains(text, "Failed to decrypt") ? keyProblem() : "";
    if (!problem.empty())
        return notRun(ExitCode::kInstallation, problem, "tscript doctor says how to repair it.");
    return notRun(ExitCode::kInstallation, text, settingsAdvice(database, text));
}

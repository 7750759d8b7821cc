// Commands `catalogue`, `journal` and `which`: records of scripts and their runs.
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/TScriptRecords.h"
#include "commands/Commands.h"
#include "commands/JournalRuns.h"
#include "commands/JournalShow.h"
#include "commands/RecordOptions.h"
#include "commands/RunJson.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "console/Listing.h"
#include "console/Times.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "journal/Records.h"
#include "package/PackageNames.h"
#include "run/CauseDiagnosis.h"
#include "system/Interrupt.h"

namespace {

constexpr int kMostRows = std::numeric_limits<int>::max();

bool isProcedure(int type) {
    return (type & kTScriptPermanent) != 0;
}
bool isSecured(int type) {
    return (type & kTScriptSecured) != 0;
}

// ---- catalogue -----------------------------------------------------------------------------------------

Cells cellsOf(const TScriptEntry_t& entry) {
    return {{std::to_string(entry.id)},
            {entry.name},
            {kindOf(entry.type)},
            {isSecured(entry.type) ? "secured" : "-", isSecured(entry.type) ? Shade::kUnusual : Shade::kNone},
            {std::to_string(entry.auditLevel)},
            {localTime(entry.creationTime)}};
}

Json jsonOf(const TScriptEntry_t& entry) {
    return {{"id", entry.id},
            {"name", entry.name},
            {"kind", kindOf(entry.type)},
            {"type", entry.type},
            {"secured", isSecured(entry.type)},
            {"auditLevel", entry.auditLevel},
            {"created", utcTime(entry.creationTime)}};
}

ExitCode listCatalogue(const RecordOptions& options) {
    checkPattern(options.name);
    TScriptRecords records;
    openRecords(records, options.database);
    Listing table({{"ID"}, {"NAME", true}, {"KIND"}, {"SECURED"}, {"AUDIT"}, {"CREATED"}});
    JsonListing array;
    std::vector<TScriptEntry_t> page;
    int beforeId = 0;
    do {
        if (!records.listScripts(options.name.c_str(), beforeId, kJournalPage, page))
            throwUnreadable(records);
        std::vector<Cells> rows;
        for (const TScriptEntry_t& entry : page) {
            if (options.json) {
                array.write(jsonOf(entry));
            } else {
                rows.push_back(cellsOf(entry));
            }
        }
        table.writePage(rows);
        if (!page.empty()) beforeId = page.back().id;
    } while (page.size() == kJournalPage && std::ferror(resultStream()) == 0);
    if (options.json) array.end();
    return ExitCode::kDone;
}

// ---- which ---------------------------------------------------------------------------------------------

struct Script {
    std::string packageFile;  // empty: there is no package
    std::string packageDatabase;
    bool hasProcedure = false;
    std::string database;  // of the catalogue that was read
    TScriptEntry_t procedure;
};

bool readPackageDatabase(const std::string& package, std::string& database, std::string& error) {
    std::string sql;
    const InterruptDelay delay;
    return TS_PreviewTscript_SQL(package.c_str(), &database, nullptr, &sql, &error);
}

void findPackage(const std::string& name, Script& script) {
    std::error_code ignored;
    const std::filesystem::path file = packageFile(name);
    if (!std::filesystem::exists(file, ignored)) return;
    script.packageFile = file;
    std::string error;
    const DVUCauses causes;
    if (readPackageDatabase(name, script.packageDatabase, error)) return;
    RunResult result;
    causes.get(result.causes);
    throw refined(diagnoseRun(name, {}, error), result).failure();
}

// Finds the newest stored-procedure row of this name. The name is used as a pattern; if it has wildcards,
// rows of other names match as well and are skipped.
void findProcedure(const std::string& name, const std::string& database, Script& script) {
    TScriptRecords records;
    openRecords(records, database);
    script.database = records.getDbName();
    std::vector<TScriptEntry_t> page;
    for (int beforeId = 0; records.listScripts(name.c_str(), beforeId, kJournalPage, page);
         beforeId = page.back().id) {
        for (const TScriptEntry_t& entry : page) {
            const bool sameName = name.find_first_of("*?") == name.npos || entry.name == name;
            if (!sameName || !isProcedure(entry.type)) continue;
            script.hasProcedure = true;
            script.procedure = entry;
            return;
        }
        if (page.size() < kJournalPage) return;
    }
    throwUnreadable(records);
}

void writeScript(const std::string& name, const Script& script, bool json) {
    const bool isPackage = !script.packageFile.empty();
    const char* kind = isPackage && script.hasProcedure ? "both" : isPackage ? "package" : "procedure";
    const std::string& scriptName = script.hasProcedure ? script.procedure.name : name;
    Json value = {{"name", scriptName}, {"kind", kind}};
    if (isPackage) {
        value["file"] = script.packageFile;
        value["packageDatabase"] = script.packageDatabase;
    }
    if (script.hasProcedure) {
        value["database"] = script.database;
        value["auditLevel"] = script.procedure.auditLevel;
        value["secured"] = isSecured(script.procedure.type);
    }
    if (json) return writeJson(value);
    std::string text = "name      " + scriptName + "\nkind      " + kind + "\n";
    if (isPackage) {
        text += "package   " + script.packageFile + "\n          runs in " +
                (script.packageDatabase.empty() ? "the database found from the installed components"
                                                : script.packageDatabase) +
                "\n";
    }
    if (script.hasProcedure) {
        text += "procedure in " + script.database + ", audit level " +
                std::to_string(script.procedure.auditLevel) +
                (isSecured(script.procedure.type) ? ", secured" : ", not secured") + "\n";
    }
    writeResult(text);
}

ExitCode showScript(const RecordOptions& options) {
    checkScriptName(options.name);
    Script script;
    const std::string name = packageNameInAnyCase(options.name);
    findPackage(name, script);
    findProcedure(options.name, options.database, script);
    if (script.packageFile.empty() && !script.hasProcedure)
        throw Failure(ExitCode::kUsage,
                      "there is neither a package nor a stored-procedure script '" + options.name + "'",
                      packageNameAdvice(options.name) +
                          (packageNameAdvice(options.name).empty() ? "" : "\n") +
                          "tscript catalogue --name PATTERN lists what " + script.database +
                          " has; packages are in " + scriptsFolder().string() + ".");
    writeScript(name, script, options.json);
    return ExitCode::kDone;
}

// ---- Commands ------------------------------------------------------------------------------------------

using SharedOptions = std::shared_ptr<RecordOptions>;

CLI::App* addListing(CLI::App& app, Action& action, const char* name, const char* description,
                     const SharedOptions& options, ExitCode (*work)(const RecordOptions&)) {
    CLI::App* command = addCommand(&app, action, name, description, options, work);
    addDatabaseOption(command, options->database);
    addFlag(command, "--json", options->json, "Write JSON with times in UTC");
    return command;
}

void addFilters(CLI::App* command, RecordOptions& options) {
    addPatternOption(command, options.name);
    addOption(command, "--status", options.status, "Only runs of this status",
              {.oneOf = {"running", "ok", "failed"}});
    addFlag(command, "--failed", options.failed, "Only runs that failed", "--status");
    addSinceOption(command, options.since);
    addOption(command, "--slower-than", options.slowerThan,
              "Only runs that took, or have taken so far, longer than this: 90s, 5m, 2h, 1d",
              {.type = "TIME"});
    addStaleOption(command, options.staleHours);
}

void addRunCommands(CLI::App& app, Action& action, const SharedOptions& options) {
    CLI::App* journal =
        addListing(app, action, "journal", "List runs of scripts, newest first", options, listRuns);
    addFilters(journal, *options);
    addNumber(journal, "--last", options->last, "The newest N of these runs; 0 for all",
              {.type = "N", .least = 0, .most = kMostRows});
    addFlag(
        journal, "--watch", options->watch,
        "Show the running scripts, their sessions on the server and what blocks them; on a terminal until "
        "Ctrl-C");

    CLI::App* show =
        addListing(*journal, action, "show", "Show one run, with its run record", options, showRun);
    addNumber(show, "ID", options->run, "The run's number in the journal",
              {.least = 1, .most = kMostRows, .defaultInHelp = false, .required = true});
    addStaleOption(show, options->staleHours);

    CLI::App* all = addListing(*journal, action, "export", "Write all runs as JSON (default) or CSV", options,
                               exportRuns);
    addFilters(all, *options);
    addFlag(all, "--csv", options->csv, "Write CSV with a heading, times in UTC", "--json");

    CLI::App* tail =
        addListing(*journal, action, "tail", "List the newest runs, oldest first", options, tailRuns);
    addFilters(tail, *options);
    addNumber(tail, "--last", options->tail, "The newest N of these runs",
              {.type = "N", .least = 1, .most = kMostRows});
    addFlag(tail, "-f,--follow", options->follow,
            "Continue with every run that starts or ends, until interrupted; --json then writes one object a "
            "line");
    addJournalCloseCommand(journal, action);
}

}  // namespace

void addJournalCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<RecordOptions>();
    CLI::App* catalogue =
        addListing(app, action, "catalogue", "List the scripts of a database's catalogue, newest first",
                   options, listCatalogue);
    addPatternOption(catalogue, options->name);

    addRunCommands(app, action, options);

    CLI::App* which =
        addListing(app, action, "which", "Show whether a name is a package, a stored procedure, or both",
                   options, showScript);
    addOption(which, "NAME", options->name, "The script's name", {.required = true});
}

// Command `list`: packages on disk and procedures of the catalogue, with their last runs.
#include <fnmatch.h>
#include <strings.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>

#include "DVUtilities/TScriptRecords.h"
#include "commands/Commands.h"
#include "commands/RecordOptions.h"
#include "commands/RunJson.h"
#include "console/Console.h"
#include "console/Listing.h"
#include "console/Times.h"
#include "installation/Installation.h"
#include "journal/Records.h"
#include "package/Inspection.h"
#include "package/PackageNames.h"
#include "package/ParameterListing.h"

namespace {

constexpr double kStaleHours = 24;  // after which a run without an end counts as abandoned

struct ListOptions {
    RecordOptions records;
    bool packagesOnly = false;
};

struct ListedScript {
    std::string name;
    std::string kind;        // package, procedure
    std::string database{};  // empty: the one of the installed components
    std::string site{};      // of a package: "any", a number
    std::string seal{};      // none, sealed, signed; what is wrong with a package that does not run
    bool isUsable = true;
    std::uintmax_t bytes = 0;
    std::vector<Parameter> parameters{};
    std::string description{};
    std::optional<TScriptRun_t> lastRun{};
};

// Catalogues and journals of the databases, each opened once.
class Databases {
  public:
    // Calls `work` with the records of the database, unless it could not be opened before. Keeps a failure.
    template <typename Work>
    void with(const std::string& database, Work work) {
        try {
            if (TScriptRecords* records = opened(database)) work(*records);
        } catch (const Failure& failure) {
            if (!m_failure) m_failure = failure;
        }
    }
    const std::optional<Failure>& failure() const { return m_failure; }

  private:
    TScriptRecords* opened(const std::string& database) {
        const auto [entry, isNew] = m_opened.try_emplace(database);
        if (!isNew) return entry->second.get();
        auto records = std::make_unique<TScriptRecords>();
        openRecords(*records, database);  // the entry stays null if this throws
        entry->second = std::move(records);
        return entry->second.get();
    }

    std::map<std::string, std::unique_ptr<TScriptRecords>> m_opened;
    std::optional<Failure> m_failure;  // the first one
};

std::string withoutBreaks(std::string text) {
    text.erase(0, std::min(text.find_first_not_of('\n'), text.size()));
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

ListedScript describePackage(const std::string& name) {
    ListedScript script{.name = name, .kind = "package"};
    const std::string file = packageFile(name).string();
    try {
        const Inspection found = inspectPackage(file);
        script.bytes = found.size;
        script.isUsable = found.isAuthentic();
        script.seal = !script.isUsable             ? "not authentic"
                      : !found.seal                ? "none"
                      : found.seal->signer.empty() ? "sealed"
                                                   : "signed";
        if (!script.isUsable) return script;
        const PackageContent& content = found.content;
        script.database = content.databaseName;
        script.site = content.plexumId != 0  ? std::to_string(content.plexumId)
                      : content.guid.empty() ? "any"
                                             : content.guid;
        script.parameters = readParameters(file).parameters;
        if (script.parameters.size() != found.placeholders) script.parameters.clear();
        script.description = withoutBreaks(
            script.parameters.empty() ? content.description : withoutParameterLines(content.description));
    } catch (const Failure& failure) {
        script.isUsable = false;
        script.seal = failure.what();
    }
    return script;
}

bool isSelected(const std::string& name, const std::string& pattern) {
    return pattern.empty() || fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD | FNM_NOESCAPE) == 0;
}

std::optional<TScriptRun_t> lastRunOf(const std::string& name, TScriptRecords& records) {
    TScriptRunFilter_t filter;
    filter.namePattern = name;
    std::vector<TScriptRun_t> runs;
    int beforeId = 0;
    do {
        if (!records.listRuns(filter, beforeId, kJournalPage, runs)) throwUnreadable(records);
        // The name is a pattern: with wildcards in it, runs of other scripts match as well.
        for (const TScriptRun_t& run : runs)
            if (strcasecmp(run.name.c_str(), name.c_str()) == 0) return run;
        if (!runs.empty()) beforeId = runs.back().id;
    } while (runs.size() == kJournalPage);
    return std::nullopt;
}

void addProcedures(std::vector<ListedScript>& scripts, const std::string& pattern, TScriptRecords& records) {
    std::vector<TScriptEntry_t> page;
    int beforeId = 0;
    do {
        if (!records.listScripts(pattern.c_str(), beforeId, kJournalPage, page)) throwUnreadable(records);
        for (const TScriptEntry_t& entry : page)
            if ((entry.type & kTScriptPermanent) != 0)
                scripts.push_back({.name = entry.name, .kind = "procedure", .database = records.getDbName()});
        if (!page.empty()) beforeId = page.back().id;
    } while (page.size() == kJournalPage);
}

std::string parameterNames(const std::vector<Parameter>& parameters) {
    std::string names;
    for (const Parameter& parameter : parameters)
        names += (names.empty() ? "" : " ") +
                 (parameter.defaultValue ? "[" + parameter.name + "]" : parameter.name);
    return names;
}

Cells cellsOf(const ListedScript& script) {
    std::string run = "-";
    if (script.lastRun)
        run = localTime(script.lastRun->startTime, "%Y-%m-%d %H:%M") + " " +
              statusText({*script.lastRun, kStaleHours});
    return {{script.name},
            {script.kind},
            {script.database},
            {script.site},
            {script.seal, script.isUsable ? Shade::kNone : Shade::kBad},
            {script.kind == "package" ? std::to_string(script.bytes) : ""},
            {run, script.lastRun && script.lastRun->status == 2 ? Shade::kBad : Shade::kNone},
            {parameterNames(script.parameters)},
            {script.description}};
}

Json jsonOf(const ListedScript& script) {
    Json value = {{"name", script.name}, {"kind", script.kind}, {"database", script.database}};
    if (script.kind == "package") {
        value["site"] = script.site;
        value["seal"] = script.seal;
        value["usable"] = script.isUsable;
        value["bytes"] = script.bytes;
        value["parameters"] = parametersJson(script.parameters);
        value["description"] = script.description;
    }
    value["lastRun"] = script.lastRun ? ::jsonOf(RunView(*script.lastRun, kStaleHours)) : Json();
    return value;
}

void write(const std::vector<ListedScript>& scripts, bool asJson) {
    if (asJson) {
        JsonListing array;
        for (const ListedScript& script : scripts) array.write(jsonOf(script));
        return array.end();
    }
    Listing table({{"NAME", true},
                   {"KIND"},
                   {"DATABASE"},
                   {"SITE"},
                   {"SEAL", true},
                   {"BYTES"},
                   {"LAST RUN"},
                   {"PARAMETERS", true},
                   {"DESCRIPTION", true}});
    std::vector<Cells> rows;
    for (const ListedScript& script : scripts) rows.push_back(cellsOf(script));
    table.writePage(rows);
}

ExitCode listScripts(const ListOptions& options) {
    requireStore();
    checkPattern(options.records.name);
    std::vector<ListedScript> scripts;
    for (const std::string& name : packageNames())
        if (isSelected(name, options.records.name)) scripts.push_back(describePackage(name));
    Databases databases;
    if (!options.packagesOnly) {
        const std::string& chosen = options.records.database;
        databases.with(
            chosen, [&](TScriptRecords& records) { addProcedures(scripts, options.records.name, records); });
        for (ListedScript& script : scripts) {
            const bool hasOwn = script.kind == "package" && !script.database.empty();
            databases.with(hasOwn ? script.database : chosen, [&](TScriptRecords& records) {
                script.lastRun = lastRunOf(script.name, records);
            });
        }
    }
    write(scripts, options.records.json);
    if (databases.failure()) throw *databases.failure();
    return ExitCode::kDone;
}

}  // namespace

void addListCommand(CLI::App& app, Action& action) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* command =
        addCommand(&app, action, "list",
                   "List the packages on disk and the procedures of the catalogue, with their last runs",
                   options, listScripts);
    addPatternOption(command, options->records.name);
    addDatabaseOption(command, options->records.database);
    addFlag(command, "--packages", options->packagesOnly, "Only packages, without using a database");
    addFlag(command, "--json", options->records.json, "Write JSON with times in UTC");
}

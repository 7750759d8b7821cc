#include "journal/JournalReader.h"

#include <algorithm>
#include <ctime>

#include "console/Console.h"
#include "console/Times.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"

namespace {

constexpr std::size_t kLongestPattern = 256;
constexpr double kMostHours = 1e6;

RunState stateOf(int status) {
    constexpr RunState kStates[] = {RunState::kRunning, RunState::kOk, RunState::kFailed};
    return status >= 0 && status < 3 ? kStates[status] : RunState::kUnknown;
}

}  // namespace

void addDatabaseOption(CLI::App* command, std::string& database) {
    command->add_option("--db", database, "The database (default: found from the installed components)")
        ->type_name("DB");
}

void addPatternOption(CLI::App* command, std::string& pattern) {
    command->add_option("--name", pattern, "Only names like this: * stands for any characters, ? for one")
        ->type_name("PATTERN");
}

void addSinceOption(CLI::App* command, std::string& since) {
    command
        ->add_option("--since", since,
                     "Only runs that started then or later: 90m, 24h, 7d, 2w (ago), 2026-01-31, "
                     "\"2026-01-31 18:30\" (local time)")
        ->type_name("TIME");
}

void addStaleOption(CLI::App* command, double& hours) {
    command->add_option("--stale", hours, "A run without an end counts as abandoned after so many hours")
        ->type_name("HOURS")
        ->check(CLI::Range(0.0, kMostHours))
        ->capture_default_str();
}

void checkPattern(const std::string& pattern) {
    checkText("the name pattern", pattern, kLongestPattern);
}

TScriptRunFilter_t runFilter(const RecordOptions& options) {
    checkPattern(options.name);
    TScriptRunFilter_t filter;
    filter.namePattern = options.name;
    if (!options.since.empty()) filter.since = parseMoment(options.since);
    return filter;
}

void openRecords(TScriptRecords& records, const std::string& database) {
    requireStore();
    if (!database.empty()) suiteDatabase(database);
    if (records.open(database.c_str())) return;
    const std::string named = records.getDbName();
    const Diagnosis diagnosis = diagnoseRun({}, named.empty() ? database : named, records.getErrorMessage());
    if (!diagnosis.scriptRan) writeNote(records.getErrorMessage());
    throw Failure(diagnosis.scriptRan ? ExitCode::kConnection : diagnosis.code,
                  diagnosis.scriptRan ? records.getErrorMessage() : diagnosis.what, diagnosis.advice);
}

void failReading(const TScriptRecords& records) {
    throw Failure(
        ExitCode::kConnection, records.getErrorMessage(),
        "Does the database have the tables ZpTscripts and ZpTscriptExec, and may the login read them?");
}

RunView::RunView(const TScriptRun_t& shown, double staleHours) : run(shown), state(stateOf(shown.status)) {
    const bool running = state == RunState::kRunning;
    const std::int64_t until = running ? std::time(nullptr) : run.endTime;
    seconds = run.startTime == 0 ? 0 : std::max<std::int64_t>(until - run.startTime, 0);
    if (running && static_cast<double>(seconds) > staleHours * 3600) state = RunState::kAbandoned;
}

const char* nameOf(RunState state) {
    constexpr const char* kNames[] = {"running", "ok", "failed", "abandoned", "unknown"};
    return kNames[static_cast<int>(state)];
}

#include "run/CauseDiagnosis.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

namespace {

constexpr int kLoginFailed = 18456;
constexpr int kNoDatabase = 4060;
constexpr int kNoSuchProcedure = 2812;
// Errors for a missing column, object, function or procedure, and for a table with other columns.
constexpr int kMissingObjects[] = {195, 207, 208, 213, 2812, 4121};

using Causes = std::vector<DVUCause_t>;

const DVUCause_t* findCause(const Causes& causes, bool (*matches)(const DVUCause_t&)) {
    const auto found = std::find_if(causes.begin(), causes.end(), matches);
    return found == causes.end() ? nullptr : &*found;
}

// Reason of a failed or lost connection that the host layer found because the server sent no message. The
// driver's records, which do not give it, have a number.
bool isConnectionReason(const DVUCause_t& cause) {
    return cause.where == kDVUConnection && cause.serverError == 0 &&
           (cause.sqlState == "08001" || cause.sqlState == "08S01");
}

bool isBadPackage(const DVUCause_t& cause) {
    return cause.where == kDVUPackage && !cause.subject.empty();
}

// From the cipher, which knows no package.
bool isBadRecord(const DVUCause_t& cause) {
    return cause.where == kDVUPackage && cause.subject.empty();
}

bool isBadKey(const DVUCause_t& cause) {
    return cause.where == kDVUConfiguration;
}

bool isMissingObject(const DVUCause_t& cause) {
    return cause.where == kDVUStatement && std::find(std::begin(kMissingObjects), std::end(kMissingObjects),
                                                     cause.serverError) != std::end(kMissingObjects);
}

// The library's batch calls the procedure itself; inside a procedure, the cause names that one.
bool isMissingProcedure(const DVUCause_t& cause) {
    return cause.where == kDVUQueryTool && cause.serverError == kNoSuchProcedure && cause.procedure.empty();
}

// The server has no error then.
bool isMissingRow(const DVUCause_t& cause) {
    return cause.where == kDVUStatement && cause.serverError == 0 && cause.sqlState.empty();
}

bool isToolNotStarted(const DVUCause_t& cause) {
    return cause.where == kDVUQueryTool && cause.systemError != 0;
}

// Also of the query tool's connection: of this tree's tool and of Microsoft's driver.
bool isLostConnection(const DVUCause_t& cause) {
    const auto says = [&](const char* ending) { return cause.text.find(ending) != std::string::npos; };
    return cause.where == kDVUConnection ||
           (cause.where == kDVUQueryTool &&
            (says("connection to the server is lost") || says("Communication link failure")));
}

// ---- Corrections, each for one kind of failure: empty for a run of another kind -----------------------

using Correction = std::optional<Diagnosis>;

constexpr const char* kRaiseLimits =
    "A limit of this process or host is reached: raise it (ulimit -a) or end other processes, and run again.";

bool isLackOfResources(int systemError) {
    return systemError == EMFILE || systemError == ENFILE || systemError == EAGAIN || systemError == ENOMEM;
}

// A file that cannot be opened for lack of descriptors would count as missing.
Correction ofLackOfResources(const Diagnosis& first, const RunResult& result) {
    const DVUCause_t* lack = findCause(
        result.causes, [](const DVUCause_t& cause) { return isLackOfResources(cause.systemError); });
    if (lack == nullptr || first.scriptRan) return std::nullopt;
    return Diagnosis{ExitCode::kInstallation,
                     lack->subject + " cannot be opened: " + std::strerror(lack->systemError), kRaiseLimits,
                     /*scriptRan=*/false};
}

Correction ofSilentTool(const Diagnosis& /*first*/, const RunResult& result) {
    return result.isToolSilent ? Correction(silentTool()) : std::nullopt;
}

Correction ofCutOutput(const Diagnosis& /*first*/, const RunResult& result) {
    return result.isOutputCut ? Correction(cutOutput()) : std::nullopt;
}

constexpr const char* kRestorePackage =
    "Restore it from a backup, or pack it again from its plain text: tscript pack. If every package fails, "
    "the key is another one: tscript doctor";
constexpr const char* kRestoreKey =
    "Restore the key file, or name it as cipherKeyFile: tscript doctor checks it.";

Correction ofBadPackage(const Diagnosis& /*first*/, const RunResult& result) {
    const DVUCause_t* package = findCause(result.causes, isBadPackage);
    if (package == nullptr) return std::nullopt;
    const DVUCause_t* key = findCause(result.causes, isBadKey);
    const DVUCause_t* reason = key != nullptr ? key : findCause(result.causes, isBadRecord);
    std::string problem = "package " + package->subject + ": " + package->text;
    if (reason != nullptr) {
        if (problem.ends_with('.')) problem.pop_back();
        problem += ": " + reason->text;
    }
    return Diagnosis{ExitCode::kInstallation, problem, key != nullptr ? kRestoreKey : kRestorePackage,
                     /*scriptRan=*/false};
}

bool isUndecided(const Diagnosis& first) {
    return first.code == ExitCode::kScriptFailed || first.code == ExitCode::kConnection;
}

Correction ofMissingObject(const Diagnosis& first, const RunResult& result) {
    const DVUCause_t* missing = findCause(result.causes, isMissingObject);
    if (missing == nullptr || !isUndecided(first)) return std::nullopt;
    const std::string database = result.database.empty() ? "DB" : result.database;
    return Diagnosis{ExitCode::kInstallation, "the database lacks what runs need: " + missing->text,
                     "tscript schema check " + database + " lists what is missing; tscript schema install " +
                         database + " creates catalogue, journal and their procedures.",
                     first.scriptRan};
}

Correction ofMissingProcedure(const Diagnosis& first, const RunResult& result) {
    const DVUCause_t* procedure = findCause(result.causes, isMissingProcedure);
    if (procedure == nullptr || result.kind != ScriptKind::kProcedure || !isUndecided(first))
        return std::nullopt;
    return Diagnosis{ExitCode::kInstallation, "the database lacks what runs need: " + procedure->text,
                     "tscript doctor names every procedure that is missing.", first.scriptRan};
}

Correction ofMissingRow(const Diagnosis& first, const RunResult& result) {
    const DVUCause_t* row = findCause(result.causes, isMissingRow);
    if (row == nullptr || first.code != ExitCode::kConnection) return std::nullopt;
    return Diagnosis{ExitCode::kInstallation, "the database lacks a row that runs need: " + row->text,
                     "tscript doctor names it. Restore it from a backup of the suite's data.",
                     first.scriptRan};
}

constexpr const char* kSetToolPath = "Set the path of sqlcmd under [host.programs] in the store.";
Correction ofToolNotStarted(const Diagnosis& first, const RunResult& result) {
    const DVUCause_t* notStarted = findCause(result.causes, isToolNotStarted);
    if (notStarted == nullptr || first.code != ExitCode::kScriptFailed) return std::nullopt;
    return Diagnosis{ExitCode::kInstallation,
                     "the query tool " + notStarted->subject + " cannot run: " + notStarted->text,
                     isLackOfResources(notStarted->systemError) ? kRaiseLimits : kSetToolPath,
                     /*scriptRan=*/false};
}

Correction ofLostConnection(const Diagnosis& first, const RunResult& result) {
    const DVUCause_t* lost = findCause(result.causes, isLostConnection);
    if (lost == nullptr || first.code != ExitCode::kScriptFailed || lost->serverError == kLoginFailed)
        return std::nullopt;
    return Diagnosis{
        ExitCode::kConnection, "the connection to the server failed during the run",
        "See whether the server runs. tscript journal shows whether the end of the run is recorded.",
        first.scriptRan};
}

// A command, or a variable of the environment, that a strict query tool refuses.
bool isRefusalOfTool(const std::string& text) {
    return text.find(" is disabled by -X1.") != text.npos ||
           text.ends_with("scripting variable not defined.");
}

Correction ofUnexplainedTool(const Diagnosis& first, const RunResult& result) {
    const DVUCause_t* main = mainCause(result.causes);
    const bool isUnexplained = main != nullptr && main->where == kDVUQueryTool && main->serverError == 0;
    if (!isUnexplained || first.code != ExitCode::kScriptFailed) return std::nullopt;
    return Diagnosis{first.code, first.what,
                     isRefusalOfTool(main->text)
                         ? "Correct the script: tscript lint names what a strict query tool refuses."
                         : "tscript doctor runs a statement through the query tool.",
                     first.scriptRan};
}

constexpr Correction (*kCorrections[])(const Diagnosis&, const RunResult&) = {
    ofLackOfResources,  ofSilentTool, ofCutOutput,      ofBadPackage,     ofMissingObject,
    ofMissingProcedure, ofMissingRow, ofToolNotStarted, ofLostConnection, ofUnexplainedTool,
};

}  // namespace

// A database that cannot be opened is reported as a refused login first.
const DVUCause_t* mainCause(const Causes& causes) {
    const DVUCause_t* database =
        findCause(causes, [](const DVUCause_t& cause) { return cause.serverError == kNoDatabase; });
    if (database != nullptr) return database;
    if (const DVUCause_t* reason = findCause(causes, isConnectionReason)) return reason;
    const DVUCause_t* message =
        findCause(causes, [](const DVUCause_t& cause) { return cause.serverError != 0; });
    return message != nullptr || causes.empty() ? message : &causes.front();
}

Diagnosis refined(Diagnosis diagnosis, const RunResult& result) {
    for (const auto correction : kCorrections)
        if (Correction corrected = correction(diagnosis, result)) return *std::move(corrected);
    return diagnosis;
}

#include "script/RunReport.h"

#include <unistd.h>

#include <chrono>
#include <string_view>
#include <utility>

#include "console/Console.h"
#include "console/Terminal.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "run/CauseDiagnosis.h"
#include "run/FailureReport.h"

namespace {

constexpr std::string_view kClosingLine = "\nTscript Execution Succeeded!";

// The script has run: if its result cannot be written, the failure names the log that has it as well.
void writeRunResult(ResultFile& target, const std::string& text) {
    try {
        target.write(text);
    } catch (const Failure& failure) {
        throw Failure(
            failure.code(), failure.what(),
            "The script has run; its output is in the debug log beside " + sessionLogFile().string() + ".");
    }
}

// Writes the lines that have not been followed. With a file as target, they complete standard output.
void writeOutput(ResultFile& target, std::string text, const FollowedOutput& followed) {
    if (!target.isStandardOutput()) writeRunResult(target, text);
    if (target.isStandardOutput() || followed.isWanted()) writeResult(followed.rest(std::move(text)));
}

// The line "Tscript Execution Succeeded!" that the library appends to the output is no data.
std::string withoutClosingLine(std::string output) {
    const std::size_t at = output.rfind(kClosingLine);
    if (at != output.npos) output.erase(at);
    return output;
}

// An interrupted run is not diagnosed further: this may connect to the server again.
Diagnosis diagnosisOf(const ScriptOptions& options, const RunResult& result) {
    if (!result.interrupted)
        return refined(diagnoseRun(options.request.name, result.database, result.output), result);
    const auto holds = [&](const char* message) { return result.output.find(message) != std::string::npos; };
    const char* what = holds("Failed to record tscript end")
                           ? "interrupted; the run has ended, but its end is not recorded"
                           : "interrupted";
    const bool hasRun = holds("\nFailed at Run");
    if (!result.timedOut) return {ExitCode::kInterrupted, what, {}, hasRun};
    const std::string limit = std::to_string(options.timeout) + " s (--timeout)";
    return {ExitCode::kScriptFailed, what + (" after " + limit), {}, hasRun};
}

LockMode lockModeOf(const ScriptOptions& options) {
    if (options.lock.empty()) return configuredLockMode(options.request.name);
    return options.lock == "fail" ? LockMode::kFail : LockMode::kWait;
}

// Without --follow, a result is followed that is printed on a terminal as it is.
bool isFollowed(const ScriptOptions& options, Operation operation) {
    if (options.follow == "never" || operation != Operation::kExecute) return false;
    const bool isPlain = !options.quiet && !options.json;
    if (options.follow.empty()) return isPlain && options.outputFile.empty() && isTerminal(STDOUT_FILENO);
    if (!isPlain) throw Failure(ExitCode::kUsage, "--follow excludes --json and --quiet");
    return true;
}

}  // namespace

Json jsonOf(const ScriptOptions& options, const RunResult& result, const Failure* failure) {
    const ExitCode code = failure != nullptr ? failure->code() : ExitCode::kDone;
    Json value = {{"script", options.request.name}, {"kind", nameOf(result.kind)}};
    if (!result.database.empty()) value["database"] = result.database;
    value["status"] = failure == nullptr ? "ok" : result.interrupted ? "interrupted" : "failed";
    value["exitCode"] = static_cast<int>(code);
    value["seconds"] = result.seconds;
    value["output"] = result.output;
    if (failure != nullptr) {
        value["error"] = failure->what();
        value["advice"] = failure->advice();
    }
    return value;
}

void throwRunFailure(const ScriptOptions& options, const RunResult& result, ResultFile& target,
                     const FollowedOutput& followed) {
    const Diagnosis diagnosis = diagnosisOf(options, result);
    const Failure failure = diagnosis.failure();
    const FailureReport report =
        result.interrupted ? FailureReport() : describeFailure(options.request, result, diagnosis);
    if (options.json) {
        Json value = jsonOf(options, result, &failure);
        if (!report.json.isNull()) value["failure"] = report.json;
        writeRunResult(target, jsonText(value));
    } else if (diagnosis.scriptRan) {
        writeOutput(target, result.output, followed);
    } else if (!result.isToolSilent) {
        writeNote(followed.rest(result.output));
    }
    if (report.text.empty()) throw failure;
    throw Failure(failure.code(), failure.what() + ("\n" + report.text));
}

ExitCode runAndReport(const ScriptOptions& options, ScriptKind kind, Operation operation) {
    FollowedOutput followed(isFollowed(options, operation));
    ResultFile target(options.outputFile);  // made before the run: fails early if it cannot be written
    ScriptRequest request = options.request;
    request.lock = lockModeOf(options);
    request.timeout = std::chrono::seconds(options.timeout);
    RunResult result = runScript(request, kind, operation, !options.quiet, followed);
    if (!result.succeeded) throwRunFailure(options, result, target, followed);
    if (options.data) result.output = withoutClosingLine(std::move(result.output));
    if (options.json) {
        writeRunResult(target, jsonText(jsonOf(options, result, nullptr)));
    } else if (!options.quiet || !target.isStandardOutput()) {
        writeOutput(target, std::move(result.output), followed);
    }
    return ExitCode::kDone;
}

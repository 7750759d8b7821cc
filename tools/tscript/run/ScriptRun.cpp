#include "run/ScriptRun.h"

#include <optional>

#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/TScriptRecords.h"
#include "console/Outcome.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "run/FollowedOutput.h"
#include "run/Progress.h"
#include "system/Interrupt.h"

namespace {

constexpr std::size_t kMostParameters = 1000;
constexpr int kBatchesOfLibrary = 1;  // SET ARITHABORT ON, before those of a package
constexpr std::size_t kLongestText = std::size_t{64} << 10;

bool callPackage(const ScriptRequest& request, Operation operation, RunResult& result) {
    std::string logFile;
    const char* name = request.name.c_str();
    const char* input = request.input.c_str();
    if (operation == Operation::kExecute)
        return TS_ExecTscript_SQL_In(name, &result.database, &request.parameters, input, &logFile,
                                     &result.output, optionsOf(request));
    return TS_ExecTscript_SQL(name, &result.database, &request.parameters, input, static_cast<int>(operation),
                              &logFile, &result.output);
}

bool callProcedure(const ScriptRequest& request, Operation operation, RunResult& result) {
    std::string logFile;
    int auditLevel = 0;
    return TS_ExecTscript_SP(request.name.c_str(), result.database.c_str(), request.arguments.c_str(),
                             request.input.c_str(), static_cast<int>(operation), &logFile, &result.output,
                             &auditLevel);
}

void checkArguments(const ScriptRequest& request) {
    const std::string& text = request.arguments;
    checkQueryText("the text of the arguments", text, kLongestText);
    const bool reachesTool = text.find_first_of("\r\n") != text.npos || text.find("$(") != text.npos;
    if (reachesTool && !request.allowToolCommands)
        throw Failure(ExitCode::kUsage, "the text of the arguments has a line break or $(",
                      "--allow-tool-commands accepts it; only for text that you trust.");
}

}  // namespace

const char* nameOf(ScriptKind kind) {
    return kind == ScriptKind::kPackage ? "package" : "procedure";
}

unsigned int optionsOf(const ScriptRequest& request) {
    return request.allowToolCommands ? kTScriptToolCommandsInValues : 0;
}

void checkRequest(const ScriptRequest& request) {
    checkScriptName(request.name);
    requireStore();
    requireSafeFiles(request.name);
    if (!request.database.empty()) suiteDatabase(request.database);
    if (request.parameters.size() > kMostParameters)
        throw Failure(ExitCode::kUsage, "more than " + std::to_string(kMostParameters) + " parameters");
    for (const std::string& value : request.parameters) checkText("a parameter", value, kLongestText);
    checkArguments(request);
    checkText("the input", request.input, kLongestText);
}

RunResult runScript(const ScriptRequest& request, ScriptKind kind, Operation operation, bool showProgress,
                    FollowedOutput& output) {
    requireLogFolder();
    RunResult result;
    result.kind = kind;
    result.database = request.database;
    const InterruptGuard guard(request.timeout);
    std::optional<RunLock> lock;
    if (request.lock != LockMode::kNone && operation == Operation::kExecute)
        lock.emplace(request.name, request.lockDatabase.empty() ? request.database : request.lockDatabase,
                     request.lock, guard);
    const Progress progress(request.name, showProgress, kind == ScriptKind::kPackage ? kBatchesOfLibrary : 0,
                            output);
    const DVUCauses causes;
    result.succeeded = kind == ScriptKind::kPackage ? callPackage(request, operation, result)
                                                    : callProcedure(request, operation, result);
    causes.get(result.causes);
    result.isToolSilent = result.succeeded && hasSilentTool(result.causes);
    result.isOutputCut = result.succeeded && hasCutOutput(result.causes);
    if (result.isToolSilent || result.isOutputCut) result.succeeded = false;
    if (result.succeeded) result.causes.clear();
    result.seconds = progress.seconds();
    result.interrupted = guard.interrupted();
    result.timedOut = guard.timedOut();
    return result;
}

#include "run/ScriptRun.h"

#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/TScriptRecords.h"
#include "console/Outcome.h"
#include "installation/Installation.h"
#include "run/Progress.h"
#include "system/Interrupt.h"

namespace {

constexpr std::size_t kMostParameters = 1000;
constexpr std::size_t kLongestText = std::size_t{64} << 10;

bool callPackage(const ScriptRequest& request, Operation operation, RunResult& result) {
    std::string logFile;
    const char* name = request.name.c_str();
    const char* input = request.input.c_str();
    if (operation == Operation::kExecute)
        return TS_ExecTscript_SQL_In(name, &result.database, &request.parameters, input, &logFile,
                                     &result.output);
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

}  // namespace

const char* nameOf(ScriptKind kind) {
    return kind == ScriptKind::kPackage ? "package" : "procedure";
}

void checkRequest(const ScriptRequest& request) {
    checkScriptName(request.name);
    requireStore();
    if (!request.database.empty()) suiteDatabase(request.database);
    if (request.parameters.size() > kMostParameters)
        throw Failure(ExitCode::kUsage, "more than " + std::to_string(kMostParameters) + " parameters");
    for (const std::string& value : request.parameters) checkText("a parameter", value, kLongestText);
    checkQueryText("the text of the arguments", request.arguments, kLongestText);
    checkText("the input", request.input, kLongestText);
}

RunResult runScript(const ScriptRequest& request, ScriptKind kind, Operation operation, bool showProgress) {
    requireLogFolder();
    RunResult result;
    result.kind = kind;
    result.database = request.database;
    const InterruptGuard guard;
    const Progress progress(request.name, showProgress);
    const DVUCauses causes;
    result.succeeded = kind == ScriptKind::kPackage ? callPackage(request, operation, result)
                                                    : callProcedure(request, operation, result);
    if (!result.succeeded) causes.get(result.causes);
    result.seconds = progress.seconds();
    result.interrupted = guard.interrupted();
    return result;
}

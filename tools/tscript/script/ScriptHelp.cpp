#include "script/ScriptHelp.h"

#include <filesystem>
#include <optional>
#include <vector>

#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Installation.h"
#include "package/ParameterListing.h"
#include "run/FollowedOutput.h"
#include "run/SqlPreview.h"
#include "run/ToolTable.h"
#include "script/PackageCommands.h"
#include "script/RunReport.h"
#include "system/ResultFile.h"

namespace {

bool isCommand(const ScriptOptions& options) {
    return hasCommand(*options.commands, options.request.name);
}

// Declared by the package of that name; empty if there is none, or if it cannot be read.
std::vector<Parameter> parametersOfPackage(const ScriptOptions& options) {
    const std::optional<SqlPreview> preview = peekPackage(options.request);
    return preview ? declaredParameters(options, *preview).parameters : std::vector<Parameter>();
}

ExitCode showPackageUsage(const ScriptOptions& options) {
    const std::vector<Parameter> parameters = parametersOfPackage(options);
    if (parameters.empty()) return runAndReport(options, ScriptKind::kPackage, Operation::kHelp);
    FollowedOutput unfollowed(/*isWanted=*/false);
    const RunResult result =
        runScript(options.request, ScriptKind::kPackage, Operation::kHelp, !options.quiet, unfollowed);
    ResultFile target(options.outputFile);
    if (!result.succeeded) throwRunFailure(options, result, target, unfollowed);
    target.write(withoutParameterLines(result.output) + "\nParameters:\n" + parametersText(parameters) +
                 "\n");
    return ExitCode::kDone;
}

}  // namespace

ExitCode showUsage(const ScriptOptions& options) {
    std::error_code ignored;
    const bool isPackage = std::filesystem::exists(packageFile(options.request.name), ignored);
    try {
        if (isPackage) return showPackageUsage(options);
        return runAndReport(options, ScriptKind::kProcedure, Operation::kHelp);
    } catch (const Failure& failure) {
        if (failure.code() != ExitCode::kUsage || !isCommand(options)) throw;
        throw Failure(failure.code(), failure.what(),
                      "For the usage of the command: tscript " + options.request.name + " --help");
    }
}

ExitCode listParameters(const ScriptOptions& options) {
    ResultFile target(options.outputFile);
    if (const std::vector<Parameter> parameters = parametersOfPackage(options); !parameters.empty()) {
        target.write(options.json ? jsonText(parametersJson(parameters)) : parametersText(parameters) + "\n");
        return ExitCode::kDone;
    }
    if (!options.json) return runAndReport(options, ScriptKind::kProcedure, Operation::kParameters);
    FollowedOutput unfollowed(/*isWanted=*/false);
    const RunResult result = runScript(options.request, ScriptKind::kProcedure, Operation::kParameters,
                                       !options.quiet, unfollowed);
    if (!result.succeeded) throwRunFailure(options, result, target, unfollowed);
    target.write(jsonText(parseToolTable(result.output)));
    return ExitCode::kDone;
}

ExitCode showCommands(const ScriptOptions& options) {
    writeResult(usageOf(*options.commands));
    return ExitCode::kDone;
}

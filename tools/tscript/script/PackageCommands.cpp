#include "script/PackageCommands.h"

#include <optional>
#include <vector>

#include "console/JsonOutput.h"
#include "console/NearestWord.h"
#include "installation/Installation.h"
#include "package/PackageNames.h"
#include "run/NamedValues.h"
#include "run/RunCheck.h"
#include "script/Obstacles.h"
#include "script/RunReport.h"
#include "system/ResultFile.h"

namespace {

[[noreturn]] void throwUndeclared(const ScriptOptions& options, const ParameterList& declared,
                                  const std::string& name) {
    const std::string nearest = nearestOption(*options.commands, "run", "--" + name);
    throw Failure(ExitCode::kUsage,
                  "the package declares no parameters, and there is no option --" + name +
                      (declared.problem.empty() ? "" : "; " + declared.problem),
                  nearest.empty() ? "Values follow -p." : "Did you mean " + nearest + "?");
}

// The options with the values of the declared parameters in the order of the placeholders.
ScriptOptions withDeclaredValues(const ScriptOptions& given, const SqlPreview& preview) {
    const std::vector<NamedValue> named = namedValues(furtherWords(*given.commands));
    const ParameterList declared = declaredParameters(given, preview);
    if (declared.parameters.empty() && !named.empty()) throwUndeclared(given, declared, named.front().name);
    ScriptOptions options = given;
    if (!declared.parameters.empty())
        options.request.parameters =
            valuesInOrder(declared.parameters, given.request.parameters, named, given.allowMissing);
    checkRequest(options.request);
    return options;
}

ScriptOptions withCheckedValues(const ScriptOptions& given, const SqlPreview& preview) {
    try {
        return withDeclaredValues(given, preview);
    } catch (const Failure& failure) {
        writeJsonOfObstacle(given, preview, failure);
        throw;
    }
}

ExitCode checkPackage(const ScriptOptions& options) {
    const SqlPreview preview = previewPackage(options.request);
    if (const std::optional<Failure> obstacle = findObstacle(options, preview)) throw *obstacle;
    ResultFile target(options.outputFile);
    const RunCheck check = checkRun(options.request, preview, options.check == kCompile);
    target.write(options.json ? jsonText(check.json) : check.text);
    if (check.failure) throw *check.failure;
    return ExitCode::kDone;
}

ExitCode runFoundPackage(const ScriptOptions& given) {
    const std::optional<SqlPreview> preview = peekPackage(given.request);
    const ScriptOptions options = preview ? withCheckedValues(given, *preview) : given;
    if (options.dryRun) return showSql(options, previewPackage(options.request));
    if (!options.check.empty()) return checkPackage(options);
    ScriptOptions run = options;
    if (preview) {
        requireRunnable(options, *preview);
        run.data = options.data || (preview->isXml && !options.outputFile.empty());
        run.request.lockDatabase = preview->database;
    }
    return runAndReport(run, ScriptKind::kPackage, Operation::kExecute);
}

}  // namespace

ExitCode runPackage(const ScriptOptions& options) {
    return onPackage(options, runFoundPackage);
}

ExitCode onPackage(const ScriptOptions& given, ExitCode (*work)(const ScriptOptions&)) {
    ScriptOptions options = given;
    options.request.name = packageNameInAnyCase(given.request.name);
    try {
        return work(options);
    } catch (const Failure& failure) {
        const std::string similar = packageNameAdvice(options.request.name);
        if (similar.empty()) throw;
        throw Failure(failure.code(), failure.what(),
                      similar + (failure.advice().empty() ? "" : "\n" + failure.advice()));
    }
}

ParameterList declaredParameters(const ScriptOptions& options, const SqlPreview& preview) {
    ParameterList declared = readParameters(packageFile(options.request.name).string());
    if (declared.problem.empty() && !declared.parameters.empty() &&
        declared.parameters.size() != preview.placeholders)
        declared = {{}, "the header does not declare one for each placeholder"};
    return declared;
}

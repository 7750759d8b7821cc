// Commands `run`, `exec`, `help` and `params`: tscripts by name.
#include <strings.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "DVUtilities/TScriptRecords.h"
#include "commands/Commands.h"
#include "commands/RecordOptions.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "console/NearestWord.h"
#include "console/Terminal.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "package/PackageNames.h"
#include "package/ParameterListing.h"
#include "run/FailureReport.h"
#include "run/FollowedOutput.h"
#include "run/NamedValues.h"
#include "run/ProcedureArguments.h"
#include "run/RunCheck.h"
#include "run/ScriptRun.h"
#include "run/SqlPreview.h"
#include "run/ToolTable.h"
#include "system/ResultFile.h"

namespace {

constexpr const char* kNamedValuesHelp =
    "Behind NAME, --PARAMETER VALUE gives the value of a parameter that the package declares; tscript params "
    "NAME lists them.";
constexpr const char* kCompile = "compile";
constexpr std::string_view kClosingLine = "\nTscript Execution Succeeded!";

struct ScriptOptions {
    ScriptRequest request;
    std::string outputFile;
    std::string lock;                    // wait, fail; empty: as the store says
    std::string follow;                  // always, never; empty: at a terminal
    int timeout = 0;                     // seconds; 0: no limit
    const CLI::App* commands = nullptr;  // all commands of the tool
    std::string check;                   // parse, compile; empty: run
    bool allowMissing = false;
    bool data = false;
    bool dryRun = false;
    bool quiet = false;
    bool json = false;
};

// ---- Results -------------------------------------------------------------------------------------------

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

// The output is a result if the script ran, else a note.
[[noreturn]] void throwRunFailure(const ScriptOptions& options, const RunResult& result, ResultFile& target,
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

// ---- Checks before a run -------------------------------------------------------------------------------

// The library ignores surplus values and leaves placeholders without a value as they are.
std::optional<Failure> findMiscount(const ScriptOptions& options, const SqlPreview& preview) {
    const std::size_t values = options.request.parameters.size();
    if (options.allowMissing || preview.kind != ScriptKind::kPackage || values == preview.placeholders)
        return std::nullopt;
    const std::string counts = std::to_string(preview.placeholders) + " placeholder(s), and " +
                               std::to_string(values) + " value(s) are given";
    const char* effect = values > preview.placeholders ? "ignores surplus values"
                                                       : "leaves placeholders without a value as they are";
    return Failure(ExitCode::kUsage, "the script has " + counts,
                   "tscript help " + options.request.name +
                       " shows its usage. With --allow-missing the script runs and " + effect + ".");
}

// The library runs an empty package, which succeeds without an effect.
std::optional<Failure> findObstacle(const ScriptOptions& options, const SqlPreview& preview) {
    if (preview.kind != ScriptKind::kPackage || !preview.isEmpty) return findMiscount(options, preview);
    return Failure(ExitCode::kInstallation,
                   "the package " + packageFile(options.request.name).string() + " has no statement",
                   "Pack it again from its plain text: tscript pack");
}

void writeJsonOfObstacle(const ScriptOptions& options, const SqlPreview& preview, const Failure& obstacle) {
    if (!options.json) return;
    RunResult notRun;
    notRun.database = preview.database;
    ResultFile(options.outputFile).write(jsonText(jsonOf(options, notRun, &obstacle)));
}

// Throws Failure before anything runs if the package is empty or the values do not fit the placeholders.
void requireRunnable(const ScriptOptions& options, const SqlPreview& preview) {
    const std::optional<Failure> obstacle = findObstacle(options, preview);
    if (!obstacle) return;
    writeJsonOfObstacle(options, preview, *obstacle);
    throw *obstacle;
}

// ---- Dry runs ------------------------------------------------------------------------------------------

Json jsonOf(const ScriptOptions& options, const SqlPreview& preview, const std::optional<Failure>& failure) {
    Json value = {
        {"script", options.request.name}, {"kind", nameOf(preview.kind)}, {"database", preview.database}};
    if (preview.kind == ScriptKind::kPackage) {
        value["placeholders"] = preview.placeholders;
        value["values"] = options.request.parameters.size();
    }
    value["exitCode"] = static_cast<int>(failure ? failure->code() : ExitCode::kDone);
    value["sql"] = preview.sql;
    if (failure) {
        value["error"] = failure->what();
        value["advice"] = failure->advice();
    }
    return value;
}

ExitCode showSql(const ScriptOptions& options, const SqlPreview& preview) {
    const std::optional<Failure> obstacle = findObstacle(options, preview);
    ResultFile target(options.outputFile);
    target.write(options.json ? jsonText(jsonOf(options, preview, obstacle)) : preview.sql);
    const std::string place =
        preview.database.empty() ? "the database found from the installed components" : preview.database;
    if (!options.quiet) writeNote("This would run in " + place + "; nothing has been run.");
    if (obstacle) throw *obstacle;
    return ExitCode::kDone;
}

// ---- Commands ------------------------------------------------------------------------------------------

// The parameters that the package declares, if its placeholders are as many; others are text of an older
// package.
ParameterList declaredParameters(const ScriptOptions& options, const SqlPreview& preview) {
    ParameterList declared = readParameters(packageFile(options.request.name).string());
    if (declared.problem.empty() && !declared.parameters.empty() &&
        declared.parameters.size() != preview.placeholders)
        declared = {{}, "the header does not declare one for each placeholder"};
    return declared;
}

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

// Finds the package in any case, and suggests a similar name for one that does not exist.
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

ExitCode runPackage(const ScriptOptions& options) {
    return onPackage(options, runFoundPackage);
}

// The request with the named values (-p) as T-SQL behind the arguments.
ScriptOptions withNamedArguments(const ScriptOptions& options) {
    ScriptOptions named = options;
    if (options.request.parameters.empty()) return named;
    std::string& text = named.request.arguments;
    text += (text.empty() ? "" : ", ") +
            namedArguments(options.request.name, options.request.database, options.request.parameters);
    checkRequest(named.request);
    return named;
}

// The catalogue's procedure whose name is most similar; empty if there is none, or one of that name.
std::string similarProcedure(const ScriptRequest& request) {
    constexpr int kMostScripts = 1000;
    TScriptRecords records;
    std::vector<TScriptEntry_t> entries;
    std::vector<std::string> names;
    if (!records.open(request.database.c_str()) || !records.listScripts("", 0, kMostScripts, entries))
        return {};
    for (const TScriptEntry_t& entry : entries)
        if ((entry.type & kTScriptPermanent) != 0) names.push_back(entry.name);
    const std::string nearest = nearestWord(names, request.name);
    return strcasecmp(nearest.c_str(), request.name.c_str()) == 0 ? std::string() : nearest;
}

ExitCode runFoundProcedure(const ScriptOptions& given) {
    const ScriptOptions options = withNamedArguments(given);
    if (options.dryRun) return showSql(options, previewProcedure(options.request));
    return runAndReport(options, ScriptKind::kProcedure, Operation::kExecute);
}

ExitCode runProcedure(const ScriptOptions& options) {
    try {
        return runFoundProcedure(options);
    } catch (const Failure& failure) {
        if (failure.code() != ExitCode::kUsage) throw;
        const std::string similar = similarProcedure(options.request);
        if (similar.empty()) throw;
        throw Failure(failure.code(), failure.what(), "Did you mean " + similar + "?\n" + failure.advice());
    }
}

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

// Of the package with this name if there is one, else of the procedure.
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

// Of the package with this name if it declares any, else of the procedure.
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

using SharedScriptOptions = std::shared_ptr<ScriptOptions>;

CLI::App* addScriptCommand(CLI::App& app, Action& action, const char* name, const char* description,
                           const SharedScriptOptions& options, ExitCode (*work)(const ScriptOptions&)) {
    CLI::App* command = addCommand(&app, name, description, [&action, options, work] {
        action = [options, work] {
            checkRequest(options->request);
            return work(*options);
        };
    });
    addOption(command, "NAME", options->request.name, "The script's name", {.required = true});
    return command;
}

void addInput(CLI::App* command, const SharedScriptOptions& options) {
    addOption(command, "--input", options->request.input,
              "Text that the journal records instead of the parameters", {.type = "TEXT"});
}

void addLockOptions(CLI::App* command, const SharedScriptOptions& options) {
    addChoiceFlag(command, "--lock", options->lock,
                  "One run of the script at a time: wait for another one (wait), or refuse to run (fail). "
                  "Default: wait for the scripts of lockedScripts in the store",
                  {"wait", "fail"});
    addNumber(
        command, "--timeout", options->timeout, "End the run after this time, the wait for its lock included",
        {.type = "SECONDS", .least = 0, .most = std::numeric_limits<int>::max(), .defaultInHelp = false});
}

void addRunOptions(CLI::App* command, const SharedScriptOptions& options) {
    addLockOptions(command, options);
    addFlag(command, "--dry-run", options->dryRun, "Show the SQL that would run, and run nothing");
    addOption(command, "-o,--output", options->outputFile,
              "Write the result to this file; if that fails, an existing file is unchanged",
              {.type = "FILE"});
    addFlag(command, "--allow-tool-commands", options->request.allowToolCommands,
            "Accept values with line breaks, $( and commands of the query tool");
    addFlag(command, "-q,--quiet", options->quiet,
            "No output if the script succeeds, no progress on the terminal");
    addChoiceFlag(
        command, "--follow", options->follow,
        "Print the script's output while it runs (always), or at its end (never). Default: while it "
        "runs at a terminal, unless the result is JSON or goes to a file",
        {"always", "never"});
    addFlag(command, "--data", options->data,
            "Write the script's output only, without the closing line; -o of an XML script does so");
    addFlag(command, "--json", options->json, "Write the result as JSON: status, seconds, output, error",
            "--quiet");
}

}  // namespace

void addScriptCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<ScriptOptions>();
    options->commands = &app;

    CLI::App* run = addScriptCommand(app, action, "run", "Run a script package", options, runPackage);
    addRepeatable(run, "-p,--parameter", options->request.parameters,
                  "A value for the next placeholder of the script; may be repeated", "VALUE");
    addFlag(run, "--allow-missing", options->allowMissing,
            "Accept more or fewer values than the script has placeholders");
    acceptFurtherWords(run, kNamedValuesHelp);
    addChoiceFlag(
        run, "--check", options->check,
        "Run nothing: check values, site and catalogue, and let the server parse every batch (parse), or "
        "compile it as well (compile)",
        {"parse", kCompile});
    addInput(run, options);
    addRunOptions(run, options);
    addOption(run, "--db", options->request.database,
              "The database of a package that names none (default: found from the installed components)",
              {.type = "DB"});

    CLI::App* help =
        addCommand(&app, "help", "Show a script's usage; without a name, the commands", [&action, options] {
            action = [options] {
                if (options->request.name.empty()) return showCommands(*options);
                checkRequest(options->request);
                return onPackage(*options, showUsage);
            };
        });
    addOption(help, "NAME", options->request.name, "The script's name");
    addDatabaseOption(help, options->request.database);

    CLI::App* exec =
        addScriptCommand(app, action, "exec", "Run a stored-procedure script", options, runProcedure);
    addOption(exec, "ARGS", options->request.arguments, "Arguments of the procedure as T-SQL: \"@days = 7\"");
    addRepeatable(exec, "-p,--parameter", options->request.parameters,
                  "A value for the parameter of that name, quoted for its type; may be repeated",
                  "NAME=VALUE");
    addDatabaseOption(exec, options->request.database);
    addInput(exec, options);
    addRunOptions(exec, options);

    CLI::App* params = addScriptCommand(
        app, action, "params",
        "List the parameters of a package that declares them, or of a stored-procedure script", options,
        listParameters);
    addDatabaseOption(params, options->request.database);
    addFlag(params, "--json", options->json, "Write JSON: one object per parameter");
}

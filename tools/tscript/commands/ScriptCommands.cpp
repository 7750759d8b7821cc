// run, help, exec, params: tscripts by name.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

#include "DVUtilities/TScriptApi.h"
#include "DVUtilities/TScriptRecords.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Diagnosis.h"
#include "installation/Installation.h"
#include "run/Progress.h"
#include "run/ToolTable.h"
#include "system/Interrupt.h"
#include "system/ResultFile.h"

namespace {

// Operation types of the exported functions.
constexpr int kExecute = 1;
constexpr int kHelp = 2;
constexpr int kParameters = 4;

constexpr std::size_t kMostParameters = 1000;
constexpr std::size_t kLongestText = std::size_t{64} << 10;

struct ScriptOptions {
    std::string name;
    std::vector<std::string> parameters;
    std::string arguments;
    std::string input;
    std::string database;
    std::string outputFile;
    const CLI::App* commands = nullptr;  // the tool's, for a name that is one of theirs
    bool dryRun = false;
    bool quiet = false;
    bool json = false;
};

// What a run left.
struct RunResult {
    const char* kind;
    std::string database;  // empty where the library does not tell
    std::string output;
    bool succeeded = false;
    bool interrupted = false;
    double seconds = 0;
};

Json jsonOf(const ScriptOptions& options, const RunResult& result, const Failure* failure) {
    const ExitCode code = failure != nullptr ? failure->code() : ExitCode::kDone;
    Json value = {{"script", options.name}, {"kind", result.kind}};
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

// The script has run by now, so that a result that cannot be written says where else it stands.
void deliver(ResultFile& target, const std::string& text) {
    try {
        target.write(text);
    } catch (const Failure& failure) {
        throw Failure(
            failure.code(), failure.what(),
            "The script has run; the debug log beside " + sessionLogFile().string() + " holds its output.");
    }
}

// Printed as a result when the script ran, as a note when it did not get that far.
[[noreturn]] void concludeFailed(const ScriptOptions& options, const RunResult& result, ResultFile& target) {
    const Diagnosis diagnosis = diagnoseRun(options.name, result.database, result.output);
    const Failure failure = result.interrupted ? Failure(ExitCode::kInterrupted, "interrupted")
                                               : Failure(diagnosis.code, diagnosis.what, diagnosis.advice);
    if (options.json) {
        deliver(target, jsonText(jsonOf(options, result, &failure)));
    } else if (diagnosis.scriptRan) {
        deliver(target, result.output);
    } else {
        writeNote(result.output);
    }
    throw failure;
}

ExitCode conclude(const ScriptOptions& options, const RunResult& result, ResultFile& target) {
    if (!result.succeeded) concludeFailed(options, result, target);
    if (options.json) {
        deliver(target, jsonText(jsonOf(options, result, nullptr)));
    } else if (!options.quiet || !target.isStandardOutput()) {
        deliver(target, result.output);
    }
    return ExitCode::kDone;
}

void checkOptions(const ScriptOptions& options) {
    checkScriptName(options.name);
    requireStore();
    if (!options.database.empty()) suiteDatabase(options.database);
    if (options.parameters.size() > kMostParameters)
        throw Failure(ExitCode::kUsage, "more than " + std::to_string(kMostParameters) + " parameters");
    for (const std::string& text : options.parameters) checkText("a parameter", text, kLongestText);
    checkQueryText("the text of the arguments", options.arguments, kLongestText);
    checkText("the input", options.input, kLongestText);
}

using Run = bool (*)(const ScriptOptions& options, int operation, std::string& database, std::string& output);

bool callPackage(const ScriptOptions& options, int operation, std::string& database, std::string& output) {
    std::string logFile;
    const char* name = options.name.c_str();
    const char* input = options.input.c_str();
    if (operation == kExecute)
        return TS_ExecTscript_SQL_In(name, &database, &options.parameters, input, &logFile, &output);
    return TS_ExecTscript_SQL(name, &database, &options.parameters, input, operation, &logFile, &output);
}

bool callProcedure(const ScriptOptions& options, int operation, std::string& database, std::string& output) {
    std::string logFile;
    int auditLevel = 0;
    return TS_ExecTscript_SP(options.name.c_str(), database.c_str(), options.arguments.c_str(),
                             options.input.c_str(), operation, &logFile, &output, &auditLevel);
}

RunResult perform(const ScriptOptions& options, int operation, const char* kind, Run run) {
    requireLogFolder();
    RunResult result{kind, options.database, {}};
    const InterruptGuard guard;
    const Progress progress(options.name, !options.quiet);
    result.succeeded = run(options, operation, result.database, result.output);
    result.seconds = progress.seconds();
    result.interrupted = guard.interrupted();
    return result;
}

ExitCode runScript(const ScriptOptions& options, int operation, const char* kind, Run run) {
    ResultFile target(options.outputFile);  // before the run: a folder that is not there fails early
    return conclude(options, perform(options, operation, kind, run), target);
}

constexpr const char* kPackage = "package";
constexpr const char* kProcedure = "procedure";

ExitCode runPackage(const ScriptOptions& options, int operation) {
    return runScript(options, operation, kPackage, callPackage);
}

ExitCode runProcedure(const ScriptOptions& options, int operation) {
    return runScript(options, operation, kProcedure, callProcedure);
}

ExitCode listParameters(const ScriptOptions& options) {
    if (!options.json) return runProcedure(options, kParameters);
    ResultFile target({});
    const RunResult result = perform(options, kParameters, kProcedure, callProcedure);
    if (!result.succeeded) concludeFailed(options, result, target);
    target.write(jsonText(rowsOf(result.output)));
    return ExitCode::kDone;
}

// ---- Dry runs ------------------------------------------------------------------------------------------

// The SQL that would run, and where.
struct SqlPreview {
    const char* kind;
    std::string database;  // empty: found from the installed components
    std::string sql;
    std::size_t placeholders = 0;  // a procedure has none
};

Json jsonOf(const ScriptOptions& options, const SqlPreview& preview) {
    Json value = {{"script", options.name}, {"kind", preview.kind}, {"database", preview.database}};
    if (preview.kind == kPackage) {
        value["placeholders"] = preview.placeholders;
        value["values"] = options.parameters.size();
    }
    value["sql"] = preview.sql;
    return value;
}

// A run takes values and placeholders as they come, so that a miscount shows here alone.
void warnOfMiscount(std::size_t placeholders, std::size_t values) {
    if (values == placeholders) return;
    const std::string counts = std::to_string(placeholders) + " placeholder(s), and " +
                               std::to_string(values) + " value(s) are given; ";
    const std::size_t difference = std::max(values, placeholders) - std::min(values, placeholders);
    writeNote(
        "warning: the script has " + counts + "the last " + std::to_string(difference) +
        (values > placeholders ? " value(s) would be ignored" : " placeholder(s) would stay as they are"));
}

ExitCode showSql(const ScriptOptions& options, const SqlPreview& preview) {
    ResultFile target(options.outputFile);
    target.write(options.json ? jsonText(jsonOf(options, preview)) : preview.sql);
    if (preview.kind == kPackage) warnOfMiscount(preview.placeholders, options.parameters.size());
    const std::string place =
        preview.database.empty() ? "the database found from the installed components" : preview.database;
    if (!options.quiet) writeNote("This would run in " + place + "; nothing has been run.");
    return ExitCode::kDone;
}

[[noreturn]] void failPreview(const ScriptOptions& options, const std::string& database,
                              const std::string& error) {
    const Diagnosis diagnosis = diagnoseRun(options.name, database, error);
    writeNote(error);
    throw Failure(diagnosis.code, diagnosis.what, diagnosis.advice);
}

std::string packageSql(const ScriptOptions& options, const std::vector<std::string>& values,
                       std::string& database) {
    std::string sql;
    std::string error;
    database = options.database;
    const auto preview = [&] {
        const InterruptDelay delay;
        return TS_PreviewTscript_SQL(options.name.c_str(), &database, &values, &sql, &error);
    };
    if (!preview()) failPreview(options, database, error);
    return sql;
}

// In the text without values, since a value may hold the mark as well.
std::size_t placeholdersIn(std::string_view sql) {
    constexpr std::string_view kMark = "%s";
    std::size_t count = 0;
    for (std::size_t at = 0; (at = sql.find(kMark, at)) != sql.npos; at += kMark.size()) ++count;
    return count;
}

ExitCode previewPackage(const ScriptOptions& options) {
    SqlPreview preview{kPackage, {}, {}};
    preview.placeholders = placeholdersIn(packageSql(options, {}, preview.database));
    preview.sql = packageSql(options, options.parameters, preview.database);
    return showSql(options, preview);
}

ExitCode previewProcedure(const ScriptOptions& options) {
    std::string sql;
    std::string error;
    if (!TS_PreviewTscript_SP(options.name.c_str(), options.arguments.c_str(), &sql, &error))
        failPreview(options, options.database, error);
    return showSql(options, {kProcedure, options.database, sql});
}

bool isCommand(const ScriptOptions& options) {
    const auto ofThatName = [&](const CLI::App* command) { return command->check_name(options.name); };
    return !options.commands->get_subcommands(ofThatName).empty();
}

// A package where there is one of that name, else a procedure.
ExitCode explain(const ScriptOptions& options) {
    std::error_code ignored;
    const bool isPackage = std::filesystem::exists(packageFile(options.name), ignored);
    try {
        return isPackage ? runPackage(options, kHelp) : runProcedure(options, kHelp);
    } catch (const Failure& failure) {
        if (failure.code() != ExitCode::kUsage || !isCommand(options)) throw;
        throw Failure(failure.code(), failure.what(),
                      "The usage of the command is shown by: tscript " + options.name + " --help");
    }
}

using Options = std::shared_ptr<ScriptOptions>;

CLI::App* addScriptCommand(CLI::App& app, Action& action, const char* name, const char* description,
                           const Options& options, ExitCode (*work)(const ScriptOptions&)) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("NAME", options->name, "The script's name")->required();
    command->callback([&action, options, work] {
        action = [options, work] {
            checkOptions(*options);
            return work(*options);
        };
    });
    return command;
}

void addInput(CLI::App* command, const Options& options) {
    command->add_option("--input", options->input, "What the journal records instead of the parameters")
        ->type_name("TEXT");
}

void addDatabase(CLI::App* command, const Options& options) {
    command
        ->add_option("--db", options->database, "The database (default: found from the installed components)")
        ->type_name("DB");
}

void addRunOptions(CLI::App* command, const Options& options) {
    command->add_flag("--dry-run", options->dryRun, "Show the SQL that would run, and run nothing");
    command
        ->add_option("-o,--output", options->outputFile,
                     "Write the result to this file, which is either whole or left as it was")
        ->type_name("FILE");
    CLI::Option* quiet = command->add_flag(
        "-q,--quiet", options->quiet, "No output of a script that succeeds, no progress on the terminal");
    command->add_flag("--json", options->json, "The result as JSON: status, seconds, output, error")
        ->excludes(quiet);
}

}  // namespace

void addScriptCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<ScriptOptions>();
    options->commands = &app;

    CLI::App* run = addScriptCommand(
        app, action, "run", "Run a script package", options,
        [](const ScriptOptions& o) { return o.dryRun ? previewPackage(o) : runPackage(o, kExecute); });
    // Read as they stand: no splitting, no lists, a leading minus or an empty text is a value as well.
    run->add_option_function<std::string>(
           "-p,--parameter", [options](const std::string& value) { options->parameters.push_back(value); },
           "A value for the next placeholder of the script; may be given several times")
        ->type_name("VALUE")
        ->trigger_on_parse()
        ->allow_extra_args(false);
    addInput(run, options);
    addRunOptions(run, options);
    run->add_option(
           "--db", options->database,
           "The database of a package that names none (default: found from the installed components)")
        ->type_name("DB");

    CLI::App* help = addScriptCommand(app, action, "help", "Show a script's usage", options, explain);
    addDatabase(help, options);

    CLI::App* exec = addScriptCommand(
        app, action, "exec", "Run a stored-procedure script", options,
        [](const ScriptOptions& o) { return o.dryRun ? previewProcedure(o) : runProcedure(o, kExecute); });
    exec->add_option("ARGS", options->arguments,
                     "What follows the procedure's name, as T-SQL: \"@days = 7\"");
    addDatabase(exec, options);
    addInput(exec, options);
    addRunOptions(exec, options);

    CLI::App* params = addScriptCommand(
        app, action, "params", "List the parameters of a stored-procedure script", options, listParameters);
    addDatabase(params, options);
    params->add_flag("--json", options->json, "As JSON: an object a parameter");
}

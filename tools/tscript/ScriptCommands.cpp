// run, help, exec, params: tscripts by name.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "DVUtilities/TScriptApi.h"
#include "Diagnosis.h"
#include "Installation.h"
#include "Interrupt.h"

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
};

// What a run left: printed as a result when the script ran, as a failure when it did not get that far.
ExitCode conclude(const ScriptOptions& options, bool succeeded, const std::string& output, bool interrupted) {
    if (succeeded) {
        writeResult(output);
        return ExitCode::kDone;
    }
    const Diagnosis diagnosis = diagnoseRun(options.name, options.database, output);
    if (diagnosis.scriptRan) {
        writeResult(output);
    } else {
        writeNote(output);
    }
    if (interrupted) throw Failure(ExitCode::kInterrupted, "interrupted");
    throw Failure(diagnosis.code, diagnosis.what, diagnosis.advice);
}

void checkOptions(const ScriptOptions& options) {
    checkScriptName(options.name);
    requireStore();
    if (!options.database.empty()) suiteDatabase(options.database);
    if (options.parameters.size() > kMostParameters)
        throw Failure(ExitCode::kUsage, "more than " + std::to_string(kMostParameters) + " parameters");
    for (const std::string& text : options.parameters)
        if (text.size() > kLongestText)
            throw Failure(ExitCode::kUsage, "a parameter is longer than 65536 bytes");
    checkQueryText("the text of the arguments", options.arguments, kLongestText);
    if (options.input.size() > kLongestText)
        throw Failure(ExitCode::kUsage, "the input is longer than 65536 bytes");
}

ExitCode runPackage(const ScriptOptions& options, int operation) {
    std::string database;
    std::string logFile;
    std::string output;
    const InterruptGuard guard;
    const bool succeeded = TS_ExecTscript_SQL(options.name.c_str(), &database, &options.parameters,
                                              options.input.c_str(), operation, &logFile, &output);
    ScriptOptions ran = options;
    ran.database = database;
    return conclude(ran, succeeded, output, guard.interrupted());
}

ExitCode runProcedure(const ScriptOptions& options, int operation) {
    std::string logFile;
    std::string output;
    int auditLevel = 0;
    const InterruptGuard guard;
    const bool succeeded =
        TS_ExecTscript_SP(options.name.c_str(), options.database.c_str(), options.arguments.c_str(),
                          options.input.c_str(), operation, &logFile, &output, &auditLevel);
    return conclude(options, succeeded, output, guard.interrupted());
}

// A package where there is one of that name, else a procedure.
ExitCode explain(const ScriptOptions& options) {
    std::error_code ignored;
    const bool isPackage = std::filesystem::exists(packageFile(options.name), ignored);
    return isPackage ? runPackage(options, kHelp) : runProcedure(options, kHelp);
}

using Options = std::shared_ptr<ScriptOptions>;

CLI::App* addCommand(CLI::App& app, Action& action, const char* name, const char* description,
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

}  // namespace

void addScriptCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<ScriptOptions>();

    CLI::App* run = addCommand(app, action, "run", "Run a script package", options,
                               [](const ScriptOptions& o) { return runPackage(o, kExecute); });
    // Read as they stand: no splitting, no lists, a leading minus or an empty text is a value as well.
    run->add_option_function<std::string>(
           "-p,--parameter", [options](const std::string& value) { options->parameters.push_back(value); },
           "A value for the next placeholder of the script; may be given several times")
        ->type_name("VALUE")
        ->trigger_on_parse()
        ->allow_extra_args(false);
    addInput(run, options);

    CLI::App* help = addCommand(app, action, "help", "Show a script's usage", options, explain);
    addDatabase(help, options);

    CLI::App* exec = addCommand(app, action, "exec", "Run a stored-procedure script", options,
                                [](const ScriptOptions& o) { return runProcedure(o, kExecute); });
    exec->add_option("ARGS", options->arguments,
                     "What follows the procedure's name, as T-SQL: \"@days = 7\"");
    addDatabase(exec, options);
    addInput(exec, options);

    CLI::App* params =
        addCommand(app, action, "params", "List the parameters of a stored-procedure script", options,
                   [](const ScriptOptions& o) { return runProcedure(o, kParameters); });
    addDatabase(params, options);
}

// Options of the commands `run`, `exec`, `help` and `params`: tscripts by name.
#include <limits>
#include <memory>

#include "commands/Commands.h"
#include "commands/RecordOptions.h"
#include "script/PackageCommands.h"
#include "script/ProcedureCommands.h"
#include "script/ScriptHelp.h"

namespace {

constexpr const char* kNamedValuesHelp =
    "Behind NAME, --PARAMETER VALUE gives the value of a parameter that the package declares; tscript params "
    "NAME lists them.";

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
              "Text that the journal records instead of the parameters",
              {.type = "TEXT", .mayBeEmpty = true});
}

void addLockOptions(CLI::App* command, const SharedScriptOptions& options) {
    addChoiceFlag(command, "--lock", options->lock,
                  "One run of the script at a time: wait for another one (wait), or refuse to run (fail). "
                  "Default: wait for the scripts of lockedScripts in the store",
                  {"wait", "fail"});
    addNumber(
        command, "--timeout", options->timeout,
        "End the run after this time, the wait for its lock included; 0: no limit",
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

void addRun(CLI::App& app, Action& action, const SharedScriptOptions& options) {
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
}

void addHelp(CLI::App& app, Action& action, const SharedScriptOptions& options) {
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
}

void addExec(CLI::App& app, Action& action, const SharedScriptOptions& options) {
    CLI::App* exec =
        addScriptCommand(app, action, "exec", "Run a stored-procedure script", options, runProcedure);
    addOption(exec, "ARGS", options->request.arguments, "Arguments of the procedure as T-SQL: \"@days = 7\"",
              {.mayBeEmpty = true});
    addRepeatable(exec, "-p,--parameter", options->request.parameters,
                  "A value for the parameter of that name, quoted for its type; may be repeated",
                  "NAME=VALUE");
    addDatabaseOption(exec, options->request.database);
    addInput(exec, options);
    addRunOptions(exec, options);
}

void addParams(CLI::App& app, Action& action, const SharedScriptOptions& options) {
    CLI::App* params = addScriptCommand(
        app, action, "params",
        "List the parameters of a package that declares them, or of a stored-procedure script", options,
        listParameters);
    addDatabaseOption(params, options->request.database);
    addFlag(params, "--json", options->json, "Write JSON: one object per parameter");
}

}  // namespace

void addScriptCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<ScriptOptions>();
    options->commands = &app;
    addRun(app, action, options);
    addHelp(app, action, options);
    addExec(app, action, options);
    addParams(app, action, options);
}

// The commands of the tool. Each function adds its commands to `app`; parsing the command line sets `action`
// to the work of the chosen one.
#pragma once

#include <memory>

#include "console/CommandLine.h"
#include "console/Outcome.h"

// Adds a command whose action calls `work` with the parsed options.
template <typename Options>
CLI::App* addCommand(CLI::App* family, Action& action, const char* name, const char* description,
                     const std::shared_ptr<Options>& options, ExitCode (*work)(const Options&)) {
    return addCommand(family, name, description,
                      [&action, options, work] { action = [options, work] { return work(*options); }; });
}

void addScriptCommands(CLI::App& app, Action& action);           // run, help, exec, params
void addJournalCommands(CLI::App& app, Action& action);          // catalogue, journal, which
void addNewCommand(CLI::App& app, Action& action);               // new
void addPackCommand(CLI::App& app, Action& action);              // pack
void addInspectCommand(CLI::App& app, Action& action);           // inspect
void addLintCommand(CLI::App& app, Action& action);              // lint
void addListCommand(CLI::App& app, Action& action);              // list
void addDiffCommand(CLI::App& app, Action& action);              // diff
void addTestCommand(CLI::App& app, Action& action);              // test
void addRepackCommand(CLI::App& app, Action& action);            // repack
void addRotateCommand(CLI::App& app, Action& action);            // rotate
void addDatabaseCommands(CLI::App& app, Action& action);         // db …
void addEachCommand(CLI::App& app, Action& action);              // each
void addMetricsCommand(CLI::App& app, Action& action);           // metrics
void addKeyCommands(CLI::App& app, Action& action);              // key create
void addCredentialCommands(CLI::App& app, Action& action);       // credentials set, test
void addSandboxCommands(CLI::App& app, Action& action);          // sandbox …
void addSchemaCommands(CLI::App& app, Action& action);           // schema …
void addDoctorCommand(CLI::App& app, Action& action);            // doctor
void addConfigCommands(CLI::App& app, Action& action);           // config …
void addReportCommand(CLI::App& app, Action& action);            // report
void addTidyCommand(CLI::App& app, Action& action);              // tidy
void addJournalCloseCommand(CLI::App* journal, Action& action);  // journal close

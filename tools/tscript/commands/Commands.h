// The families of commands, one source file each. An adder defines its commands; the one that is chosen on
// the command line puts its work into `action`.
#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "console/Outcome.h"

// A command that does its work with its options once the command line has been read whole.
template <typename Options>
CLI::App* addCommand(CLI::App* family, Action& action, const char* name, const char* description,
                     const std::shared_ptr<Options>& options, ExitCode (*work)(const Options&)) {
    CLI::App* command = family->add_subcommand(name, description);
    command->callback([&action, options, work] { action = [options, work] { return work(*options); }; });
    return command;
}

void addScriptCommands(CLI::App& app, Action& action);   // run, help, exec, params
void addJournalCommands(CLI::App& app, Action& action);  // catalogue, journal, which
void addReportCommand(CLI::App& app, Action& action);    // report
void addPackageCommands(CLI::App& app, Action& action);  // pack, and:
void addInspectCommand(CLI::App& app, Action& action);
void addLintCommand(CLI::App& app, Action& action);
void addRepackCommand(CLI::App& app, Action& action);
void addDatabaseCommands(CLI::App& app, Action& action);    // db …
void addKeyCommands(CLI::App& app, Action& action);         // key create
void addCredentialCommands(CLI::App& app, Action& action);  // credentials set, test
void addSandboxCommands(CLI::App& app, Action& action);     // sandbox …
void addDoctorCommand(CLI::App& app, Action& action);       // doctor
void addConfigCommands(CLI::App& app, Action& action);      // config …

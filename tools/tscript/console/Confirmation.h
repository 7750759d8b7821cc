// Asking before something is lost.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

// The option --no-input of the whole tool: what would be asked fails instead.
void addNoInput(CLI::App& app);
// Whether somebody can be asked: standard input is a terminal, and --no-input was not given.
bool canAsk();

// The option --yes of a command that asks.
void addConsent(CLI::App* command, bool& yes);
// Asks on the terminal unless `yes`. Throws Failure: usage when nobody can be asked, interrupted for anything
// but "yes".
void confirm(bool yes, const std::string& question);

// Questions to the user before data is lost.
#pragma once

#include <string>

#include "console/CommandLine.h"

// Adds the global option --no-input, which makes every question fail.
void addNoInputOption(CLI::App& app);
// True if standard input is a terminal and --no-input was not given.
bool canAsk();

// Adds the option --yes, which answers the question of a command.
void addYesOption(CLI::App* command, bool& yes);
// Asks on the terminal unless `yes` is set. Throws Failure: kUsage if canAsk() is false, kInterrupted for any
// answer but "yes".
void confirm(bool yes, const std::string& question);

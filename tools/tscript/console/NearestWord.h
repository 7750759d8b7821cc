// Suggestions for mistyped commands.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

// Returns an error message for the first word that is not a command, with the most similar command if there
// is one; empty if all command words are known.
std::string describeUnknownCommand(const CLI::App& app, int argc, char** argv);

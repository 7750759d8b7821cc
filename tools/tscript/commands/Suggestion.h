// Help for a mistyped command.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

// The text about the first word that names no command, with the nearest one if there is one; empty when all
// command words are known.
std::string unknownCommand(const CLI::App& app, int argc, char** argv);

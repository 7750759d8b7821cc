// The tool's command line and the variables that set its options.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "options/Options.h"

namespace sqlcmd {

// Reads the arguments and the defaults from the environment variables SQLCMD*. Overwrites the password in
// argv and in the environment: process lists and child processes must not show it. Asks for a missing
// password if standard input is a terminal. Throws UsageError.
Options parseOptions(int argc, char** argv);

// Sets the option of a variable such as SQLCMDCOLSEP, whatever the name's case. Throws UsageError for a
// variable that no script may set and for an invalid value.
void setByVariable(Options& options, std::string_view name, std::string_view value);

// Returns the variables that show the options' values.
std::vector<std::pair<std::string, std::string>> optionVariables(const Options& options);

std::string usageText();

}  // namespace sqlcmd

// Arguments of a stored-procedure script that are given as names and values.
#pragma once

#include <string>
#include <vector>

// Returns "@NAME = value, ..." for words of the form NAME=VALUE ("@" may precede the name): each value is a
// literal of its parameter's type. `database` is empty for the one of the installed components. Throws
// Failure: kUsage for a word without "=", a parameter that the procedure does not have, or a value that is no
// literal of its type; kConnection and others if the types cannot be read.
std::string namedArguments(const std::string& procedure, const std::string& database,
                           const std::vector<std::string>& words);

// The strict query tool: its password leaves the command line, its scripts reach neither variables nor a
// shell.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hostlayer {

// True if `program` names the query tool, in any folder, and the setting strictQueryTool is on.
bool isStrictQueryTool(std::string_view program);

// Changes the arguments of a query tool that is about to start, and the variables ("NAME=VALUE") that replace
// those of its environment. The value of -P, which every user of the host could read in the process list,
// moves to the variable SQLCMDPASSWORD; "-x" and "-X1" are added, so that $(NAME) is not expanded (unless
// VtExpandToolVariables() allows it) and a script that would start a program ends there, as failed. The
// start-up script that SQLCMDINI names is not run.
void makeStrict(std::vector<std::string>& arguments, std::vector<std::string>& variables);

}  // namespace hostlayer

#include "process/StrictQueryTool.h"

#include <string.h>

#include <utility>

#include "HostSettings.h"
#include "VtToolVariables.h"
#include "process/ProgramPath.h"

namespace hostlayer {
namespace {

constexpr std::string_view kQueryTool = "sqlcmd";
constexpr char kLenient[] = "0";
constexpr std::string_view kPasswordVariable = "SQLCMDPASSWORD=";
constexpr std::string_view kNoStartUpScript = "SQLCMDINI=";
// Options of the tool that are followed by their value as an argument of its own.
constexpr std::string_view kOptionsWithValue = "FHKPQSUYZacdfhilmoqstvwyz";

thread_local bool expandsVariables = false;

bool hasSeparateValue(std::string_view option) {
    return option.size() == 2 && option[0] == '-' && kOptionsWithValue.find(option[1]) != option.npos;
}

using Argument = std::vector<std::string>::iterator;

// "-U -P PASSWORD": the user name is empty, and a command line does not quote it.
bool lacksUser(Argument option, Argument end) {
    return *option == "-U" && end - option > 2 && *(option + 1) == "-P" && *(option + 2) != "-P";
}

// Finds -P among the options, not among their values.
Argument passwordOption(std::vector<std::string>& arguments) {
    auto option = arguments.begin() + 1;
    while (option != arguments.end() && *option != "-P") {
        const bool skipsValue =
            hasSeparateValue(*option) && option + 1 != arguments.end() && !lacksUser(option, arguments.end());
        option += skipsValue ? 2 : 1;
    }
    return option;
}

void movePassword(std::vector<std::string>& arguments, std::vector<std::string>& variables) {
    const auto option = passwordOption(arguments);
    if (option == arguments.end() || option + 1 == arguments.end()) return;
    std::string& password = *(option + 1);
    std::string variable;
    variable.reserve(kPasswordVariable.size() + password.size());  // growing would leave a copy of it
    variable.append(kPasswordVariable).append(password);
    ::explicit_bzero(password.data(), password.size());
    arguments.erase(option, option + 2);
    variables.push_back(std::move(variable));
}

}  // namespace

bool isStrictQueryTool(std::string_view program) {
    return entryNameOf(program) == kQueryTool && hostSetting("strictQueryTool", kLenient) != kLenient;
}

void makeStrict(std::vector<std::string>& arguments, std::vector<std::string>& variables) {
    movePassword(arguments, variables);
    variables.emplace_back(kNoStartUpScript);
    arguments.insert(arguments.begin() + 1, "-X1");
    if (!expandsVariables) arguments.insert(arguments.begin() + 1, "-x");
}

}  // namespace hostlayer

bool VtExpandToolVariables(bool expand) noexcept {
    return std::exchange(hostlayer::expandsVariables, expand);
}

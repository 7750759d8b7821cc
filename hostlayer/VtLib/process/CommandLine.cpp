#include "process/CommandLine.h"

namespace hostlayer {

bool splitCommandLine(std::string_view line, std::vector<std::string>& arguments) {
    bool isQuoted = false;
    bool isInArgument = false;
    for (const char character : line) {
        if (!isQuoted && (character == ' ' || character == '\t')) {
            isInArgument = false;
            continue;
        }
        if (!isInArgument) arguments.emplace_back();
        isInArgument = true;
        if (character == '"') {
            isQuoted = !isQuoted;
        } else {
            arguments.back() += character;
        }
    }
    return !isQuoted;
}

}  // namespace hostlayer

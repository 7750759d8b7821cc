#include "CommandLine.h"

namespace hostlayer {

bool splitCommandLine(std::string_view line, std::vector<std::string>& words) {
    bool isQuoted = false;
    bool isInWord = false;
    for (const char character : line) {
        if (!isQuoted && (character == ' ' || character == '\t')) {
            isInWord = false;
            continue;
        }
        if (!isInWord) words.emplace_back();
        isInWord = true;
        if (character == '"') {
            isQuoted = !isQuoted;
        } else {
            words.back() += character;
        }
    }
    return !isQuoted;
}

}  // namespace hostlayer

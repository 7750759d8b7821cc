#include "run/FailurePlace.h"

#include <strings.h>

#include <algorithm>

#include "package/StatementLines.h"

namespace {

// True for "GO" and "GO 3".
bool endsBatch(const std::string& line) {
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == line.npos || strncasecmp(line.c_str() + begin, "GO", 2) != 0) return false;
    return line.find_first_not_of(" \t\r0123456789", begin + 2) == line.npos;
}

// The query tool executes such a line itself; the server does not count it.
bool isToolCommand(const std::string& line) {
    return line.front() == ':';
}

}  // namespace

std::vector<FailurePlace> possiblePlaces(const std::string& packageFile, int line,
                                         const std::vector<std::string>& values) {
    const auto hasLineBreak = [](const std::string& value) { return value.find('\n') != value.npos; };
    if (line < 1 || std::any_of(values.begin(), values.end(), hasLineBreak)) return {};
    std::vector<FailurePlace> places;
    std::size_t batch = 1;
    int lineOfBatch = 0;
    for (const StatementLine& statement : statementLines(packageFile)) {
        if (endsBatch(statement.text)) {
            batch += lineOfBatch > 0 ? 1 : 0;
            lineOfBatch = 0;
        } else if (!isToolCommand(statement.text) && ++lineOfBatch == line) {
            places.push_back({batch, statement.number, statement.text});
        }
    }
    return places;
}

#include "commands/RecordOptions.h"

#include "console/Times.h"
#include "installation/Installation.h"

namespace {

constexpr std::size_t kLongestPattern = 256;
constexpr double kMostHours = 1e6;

}  // namespace

void addDatabaseOption(CLI::App* command, std::string& database) {
    addOption(command, "--db", database, "The database (default: found from the installed components)",
              {.type = "DB"});
}

void addPatternOption(CLI::App* command, std::string& pattern) {
    addOption(command, "--name", pattern, "Only names that match: * is any characters, ? is one",
              {.type = "PATTERN"});
}

void addSinceOption(CLI::App* command, std::string& since) {
    addOption(command, "--since", since,
              "Only runs that started then or later: 90m, 24h, 7d, 2w (ago), yesterday, 2026-01-31, "
              "\"2026-01-31 18:30\" (local time)",
              {.type = "TIME"});
}

void addStaleOption(CLI::App* command, double& hours) {
    addNumber(command, "--stale", hours, "A run without an end counts as abandoned after this time",
              {.type = "HOURS", .least = 0.0, .most = kMostHours});
}

void checkPattern(const std::string& pattern) {
    checkText("the name pattern", pattern, kLongestPattern);
}

TScriptRunFilter_t runFilter(const RecordOptions& options) {
    checkPattern(options.name);
    TScriptRunFilter_t filter;
    filter.namePattern = options.name;
    if (!options.since.empty()) filter.since = parseMoment(options.since);
    return filter;
}

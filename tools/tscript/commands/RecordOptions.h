// Options of the commands that read catalogue and journal.
#pragma once

#include <string>

#include "DVUtilities/TScriptRecords.h"
#include "console/CommandLine.h"

inline constexpr int kJournalPage = 1000;  // rows that a command reads at a time

struct RecordOptions {
    std::string name;
    std::string database;
    std::string status;
    std::string since;
    std::string slowerThan;
    bool failed = false;
    int last = 50;
    int tail = 10;
    bool follow = false;
    bool watch = false;
    bool csv = false;
    int run = 0;  // its number in the journal
    double staleHours = 24;
    bool json = false;
};

void addDatabaseOption(CLI::App* command, std::string& database);
void addPatternOption(CLI::App* command, std::string& pattern);
void addSinceOption(CLI::App* command, std::string& since);
void addStaleOption(CLI::App* command, double& hours);

// Throws Failure (kUsage) if the name pattern is too long.
void checkPattern(const std::string& pattern);
// Filter by name and time. Throws Failure (kUsage).
TScriptRunFilter_t runFilter(const RecordOptions& options);

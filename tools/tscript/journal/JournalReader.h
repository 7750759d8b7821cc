// Reading catalogue and journal for the commands that show them.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <string>

#include "DVUtilities/TScriptRecords.h"

// What the commands' options choose.
struct RecordOptions {
    std::string name;
    std::string database;
    std::string status;
    std::string since;
    int last = 50;
    double staleHours = 24;
    bool json = false;
};

void addDatabaseOption(CLI::App* command, std::string& database);
void addPatternOption(CLI::App* command, std::string& pattern);
void addSinceOption(CLI::App* command, std::string& since);
void addStaleOption(CLI::App* command, double& hours);

// Throws Failure (usage) for a name pattern that is too long.
void checkPattern(const std::string& pattern);
// Name and time of the options. Throws Failure (usage).
TScriptRunFilter_t runFilter(const RecordOptions& options);
// Throws Failure with what stands in the way. `database`: empty for the one of the installed components.
void openRecords(TScriptRecords& records, const std::string& database);
// Throws Failure (connection).
[[noreturn]] void failReading(const TScriptRecords& records);

enum class RunState { kRunning, kOk, kFailed, kAbandoned, kUnknown };

// A run as the journal's reader sees it now.
struct RunView {
    const TScriptRun_t& run;
    RunState state;
    std::int64_t seconds;  // what it took, or has taken so far

    RunView(const TScriptRun_t& shown, double staleHours);
};
const char* nameOf(RunState state);

// Outputs of failed runs: from their run records; where there is none, recovered from the debug logs and from
// the output files of interrupted runs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "DVUtilities/TScriptRecords.h"
#include "journal/RunRecords.h"

struct RunOutput {
    std::string text{};       // the first 10 lines at most; empty if unknown
    bool more = false;        // further lines exist
    bool isRecorded = false;  // taken from the run's record
    std::string cause{};      // of a recorded failure
};

// Returns one output for each run, in the same order. Runs without a record are matched with log entries by
// name and time. Ignores files that are missing, not regular or not readable.
std::vector<RunOutput> findOutputs(RunRecords& records, const std::filesystem::path& logFolder,
                                   const std::string& database, const std::vector<TScriptRun_t>& runs);

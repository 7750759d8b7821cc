// Outputs of failed runs, recovered from the debug logs and from the output files of interrupted runs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "DVUtilities/TScriptRecords.h"

struct RunOutput {
    std::string text;   // the first 10 lines at most; empty if unknown
    bool more = false;  // further lines exist
};

// Returns one output for each run, in the same order. Matches runs and log entries by name and time. Ignores
// files that are missing, not regular or not readable.
std::vector<RunOutput> findOutputs(const std::filesystem::path& logFolder, const std::string& database,
                                   const std::vector<TScriptRun_t>& runs);

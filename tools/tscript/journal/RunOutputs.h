// What failed runs have written, as far as it is still known: from the debug log, into which the output of
// every run goes, and from the output files that broken-off runs leave behind.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "DVUtilities/TScriptRecords.h"

struct RunOutput {
    std::string text;   // its first lines, ten at most; empty where nothing is known
    bool more = false;  // there were more
};

// In the order of `runs`. A run is found by its name and its times. Files that are missing, no regular files,
// or not readable by this user say nothing.
std::vector<RunOutput> findOutputs(const std::filesystem::path& logFolder, const std::string& database,
                                   const std::vector<TScriptRun_t>& runs);

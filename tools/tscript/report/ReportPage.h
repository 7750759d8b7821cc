// Page of `tscript report`: one HTML file without scripts or further files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "journal/RunOutputs.h"
#include "journal/RunStatistics.h"

// A run that failed or was abandoned.
struct BadRun {
    TScriptRun_t run;
    RunState state;
    std::int64_t seconds;
};

struct Report {
    std::string database;
    std::string pattern;     // of script names; empty: all
    std::int64_t since = 0;  // 0: all times
    std::int64_t now = 0;
    StateCounts counts;
    Timeline timeline;
    ScriptTotals totals;
    std::vector<BadRun> badRuns;     // the newest ones, newest first
    std::vector<RunOutput> outputs;  // of badRuns, in the same order
};

std::string reportPage(Report& report);

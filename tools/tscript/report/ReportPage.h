// The page that `tscript report` writes: HTML that asks for nothing else, neither files nor scripts.
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
    std::string pattern;     // of names; empty: all
    std::int64_t since = 0;  // 0: from the beginning
    std::int64_t now = 0;
    std::int64_t oldest = 0, newest = 0;  // starts; 0 without runs
    StateCounts counts;
    Timeline timeline;
    ScriptTotals totals;
    std::vector<BadRun> badRuns;     // the newest, newest first
    std::vector<RunOutput> outputs;  // theirs
};

std::string reportPage(Report& report);

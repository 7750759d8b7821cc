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

// The period of the same length before that of the report.
struct PeriodBefore {
    std::int64_t since = 0;  // 0: no comparison
    StateCounts counts;
    ScriptTotals totals;
};

struct Report {
    std::string database;
    std::string pattern;     // of script names; empty: all
    std::int64_t since = 0;  // 0: all times
    std::int64_t now = 0;
    std::int64_t until = 0;  // end of the period; 0: now
    StateCounts counts;
    Timeline timeline;
    ScriptTotals totals;
    PeriodBefore before;
    std::vector<BadRun> badRuns;     // the newest ones, newest first
    std::vector<RunOutput> outputs;  // of badRuns, in the same order
};

std::string reportPage(Report& report);

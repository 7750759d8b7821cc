// State and duration of a run in the journal.
#pragma once

#include <cstdint>

#include "DVUtilities/TScriptRecords.h"

enum class RunState { kRunning, kOk, kFailed, kAbandoned, kUnknown };

// A run with its state and duration at the time of construction. Refers to the run given.
struct RunView {
    const TScriptRun_t& run;
    RunState state;
    std::int64_t seconds;  // until its end, or so far

    // A run without an end counts as abandoned after `staleHours`.
    RunView(const TScriptRun_t& journalRun, double staleHours);
};
const char* nameOf(RunState state);

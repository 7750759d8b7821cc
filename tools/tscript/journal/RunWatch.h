// Running scripts, and what the server does for each.
#pragma once

#include <string>

struct WatchOptions {
    std::string database;
    std::string pattern;  // of names; empty: all
    double staleHours;    // older runs count as abandoned and are left out
    bool json;
};

// Lists the runs that have not ended, each with its session on the server: state, wait, blocking session.
// Repeats it every two seconds on an ANSI terminal, unless as JSON; ends there only with the process. Throws
// Failure.
void watchRuns(const WatchOptions& options);

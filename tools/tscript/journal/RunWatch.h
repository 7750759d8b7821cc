// Running scripts, and what the server does for each.
#pragma once

#include <string>

struct WatchOptions {
    std::string database;
    std::string pattern;  // of names; empty: all
    double staleHours;    // older runs count as abandoned and are left out
    bool json;
};

// Lists the runs that have not ended, each with its session on the server: state, wait, blocking session. On
// an ANSI terminal, and not as JSON, repeats this every two seconds until the process ends. Throws Failure.
void watchRuns(const WatchOptions& options);

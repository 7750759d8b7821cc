// Options of the commands `run`, `exec`, `help` and `params`.
#pragma once

#include <string>

#include "console/CommandLine.h"
#include "run/ScriptRun.h"

struct ScriptOptions {
    ScriptRequest request;
    std::string outputFile;
    std::string lock;                    // wait, fail; empty: as the store says
    std::string follow;                  // always, never; empty: at a terminal
    int timeout = 0;                     // seconds; 0: no limit
    const CLI::App* commands = nullptr;  // all commands of the tool
    std::string check;                   // parse, compile; empty: run
    bool allowMissing = false;
    bool data = false;
    bool dryRun = false;
    bool quiet = false;
    bool json = false;
};

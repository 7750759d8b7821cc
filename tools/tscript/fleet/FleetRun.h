// One command of this program on several installations.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "fleet/Stores.h"

enum class FleetResult { kNotRun, kOk, kFailed, kInterrupted };
const char* nameOf(FleetResult result);

struct FleetMember {
    InstallationStore store;
    FleetResult result = FleetResult::kNotRun;
    int exitCode = 0;
    std::int64_t seconds = 0;
    std::filesystem::path output{};  // files of its standard output and standard error
    std::filesystem::path errors{};
};

struct FleetPlan {
    std::vector<std::string> command;  // without the program's name
    int jobs = 1;                      // run at the same time
    bool keepGoing = false;            // also after a failure; else no further one is started
    std::filesystem::path folder;      // of the outputs, one file LABEL.out and LABEL.err per store
};

// Runs the command on each member. Calls `ended` with each member that has ended and with their number so
// far; if it returns false, no further member is started. Ctrl-C is passed on to the running members; no
// further one is started then, and the result is false. Throws Failure.
bool runFleet(std::vector<FleetMember>& members, const FleetPlan& plan,
              const std::function<bool(const FleetMember&, std::size_t)>& ended);

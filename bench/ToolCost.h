// Runs of programs: their success, their time and peak memory.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Program.h"

namespace bench {

// Runs a program without input, with SQLCMDPASSWORD in its environment. Throws std::runtime_error, with what
// it printed, unless its exit code is 0.
void runTool(const std::vector<std::string>& command, const std::string& password = {});

struct ToolCost {
    double seconds = 0;
    std::size_t peakMemory = 0;  // bytes
};

// Runs a program without input and discards its output. Throws std::runtime_error unless its exit code is 0.
ToolCost costOfTool(const std::vector<std::string>& command, const support::ProgramOptions& options);

}  // namespace bench

// What ends the tool early. Each reaches main(), which prints it and returns 1.
#pragma once

#include <stdexcept>

namespace sqlcmd {

// The command line is wrong: the text is followed by the usage.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A file, a script or the output cannot be used. The text is the whole line to print.
struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What was wrong has been printed already.
struct AlreadyReported : std::exception {};

}  // namespace sqlcmd

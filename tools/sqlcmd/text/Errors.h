// Exceptions that end the tool. main() catches them, prints the text and returns 1.
#pragma once

#include <stdexcept>

namespace sqlcmd {

// The command line is invalid. The usage is printed after the text.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A file, a script or the output cannot be used. The text is the complete line to print.
struct ToolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The error has been printed already.
struct AlreadyReported : std::exception {};

}  // namespace sqlcmd

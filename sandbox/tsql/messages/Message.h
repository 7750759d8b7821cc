// Messages to the client, and the error that becomes one.
#pragma once

#include <stdexcept>
#include <string>

namespace tsql {

// An error or informational message (PRINT has severity 0).
struct Message {
    int number = 0;
    int severity = 0;  // above 10: error; 20 and above: ends the session
    int state = 1;
    int line = 1;           // line of the batch or procedure, from 1
    std::string procedure;  // empty outside of procedures
    std::string text;       // UTF-8
};

// The engine's only exception type: an error with SQL Server's number, severity and state.
struct SqlError : std::runtime_error {
    SqlError(int errorNumber, const std::string& text, int errorSeverity = 16, int errorState = 1)
        : std::runtime_error(text), number(errorNumber), severity(errorSeverity), state(errorState) {}

    int number;
    int severity;  // as Message::severity
    int state;
};

}  // namespace tsql

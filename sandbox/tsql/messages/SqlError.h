// The engine's only exception type: an error with SQL Server's number, severity and state.
#pragma once

#include <stdexcept>
#include <string>

namespace tsql {

struct SqlError : std::runtime_error {
    SqlError(int errorNumber, const std::string& text, int errorSeverity = 16, int errorState = 1)
        : std::runtime_error(text), number(errorNumber), severity(errorSeverity), state(errorState) {}

    int number;
    int severity;  // as Message::severity
    int state;
};

}  // namespace tsql

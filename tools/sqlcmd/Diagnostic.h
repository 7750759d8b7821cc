// What the server or the driver has to say: errors, warnings and PRINT texts.
#pragma once

#include <string>
#include <vector>

#include "Driver.h"

namespace sqlcmd {

struct Diagnostic {
    std::string sqlState;
    int number = 0;
    int severity = 0;
    int state = 1;  // 1, what most messages have, where the driver keeps it to itself, as FreeTDS does
    int line = 0;
    std::string procedure;
    std::string server;
    std::string driver;  // as the driver calls itself
    std::string text;    // without the names in brackets before it
    bool fromServer = false;

    bool isError() const { return severity > 10; }
};

// All records of the handle's last call.
std::vector<Diagnostic> diagnosticsOf(const DriverFunctions& functions, SQLSMALLINT handleType,
                                      SQLHANDLE handle);

}  // namespace sqlcmd

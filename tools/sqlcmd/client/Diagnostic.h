// Diagnostics: errors, warnings and PRINT messages of the server and the driver.
#pragma once

#include <string>

namespace sqlcmd {

constexpr int kErrorSeverity = 11;  // lower severities are information
constexpr int kFatalSeverity = 20;  // SQL Server ends the connection from this severity on
constexpr const char* kFreeTdsName = "FreeTDS";

struct Diagnostic {
    std::string sqlState;
    int number = 0;
    int severity = 0;
    int state = 1;          // FreeTDS's ODBC driver does not report it; 1 is the most frequent one
    int line = 0;           // in the batch or procedure, from 1
    std::string procedure;  // empty outside procedures, and with FreeTDS's ODBC driver
    std::string server;
    std::string driver;  // the name that the driver gives itself
    std::string names;   // the bracketed names that an ODBC driver puts before the text
    std::string text;    // without the bracketed names that drivers put before it
    bool fromServer = false;

    bool isError() const { return severity >= kErrorSeverity; }
};

// The driver's message that the connection has ended without one of the server. tscript knows the text.
inline Diagnostic lostConnection() {
    Diagnostic loss;
    loss.driver = kFreeTdsName;
    loss.severity = kFatalSeverity;
    loss.text = "The connection to the server is lost";
    return loss;
}

}  // namespace sqlcmd

// Lines of log files, each one open, one append and one close.
#pragma once

#include <string>
#include <string_view>

// The present moment as log lines begin with it: "YYYY/MM/DD hh:mm:ss", local time.
std::string currentTimeString();

// Appends in one write, so that entries of concurrent writers never mix; a problem is printed on standard
// output.
void appendToLog(const char* logFile, std::string_view entry);

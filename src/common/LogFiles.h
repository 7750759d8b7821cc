// Writers of log files. Each entry opens the file, appends and closes it.
#pragma once

#include <string>
#include <string_view>

// Current local time as "YYYY/MM/DD hh:mm:ss", the prefix of every log line.
std::string currentTimeString();

// Appends an entry with one write, so that entries of concurrent writers do not mix. Prints a failure on
// standard output.
void appendToLog(const char* logFile, std::string_view entry);

// Run of a child process.
#pragma once

enum class ProcessEnd { kNotStarted, kFailed, kSucceeded };

// Starts a command line silently and waits (`timeout` in milliseconds; 0xFFFFFFFF: no limit). The program's
// name is everything before the first blank, quotes included: a path with a blank is cut there. Callers rely
// on it. Any end but exit code 0 is kFailed. The reason goes to the debug log, the command line never does.
ProcessEnd runProcess(const char* commandLine, unsigned int timeout);

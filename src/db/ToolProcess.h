// A child process from its start to its end.
#pragma once

enum class ProcessEnd { kNotStarted, kFailed, kSucceeded };

// Starts the command line silently and waits (milliseconds; 0xFFFFFFFF: without limit). The program's name is
// the text before the first blank. It carries the quotes of a quoted path, and a path with a blank in it is
// cut there: the platform takes both as they are. Anything but exit code 0 is kFailed; why goes to the debug
// log, where the command line itself never does.
ProcessEnd runProcess(const char* commandLine, unsigned int timeout);

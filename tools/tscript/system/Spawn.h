// Child processes of the sandbox commands: the server, and sqlcmd with a password in its environment.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

struct ChildOptions {
    std::vector<std::string> environment;  // NAME=value, on top of this process's
    std::string outputFile;        // receives standard output and standard error; truncated, mode 0600
    bool detached = false;         // in a session of its own: outlives this process and its terminal
    std::string workingDirectory;  // empty: this process's
};

// Starts a program (a path) without a shell, with /dev/null as its input. Throws Failure (installation).
pid_t startChild(const std::vector<std::string>& command, const ChildOptions& options);

// The same, then waits. The exit code, or 128 + the signal that ended it.
int runChild(const std::vector<std::string>& command, const ChildOptions& options);

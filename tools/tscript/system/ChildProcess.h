// Child processes.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

struct ChildOptions {
    std::vector<std::string> environment = {};  // "NAME=value", added to this process's environment
    std::string outputFile;             // receives standard output and standard error; truncated, mode 0600
    std::string errorFile = {};         // receives standard error instead
    bool ownGroup = false;              // in a process group of its own
    bool detached = false;              // in a session of its own: outlives this process and its terminal
    std::string workingDirectory = {};  // empty: that of this process
};

// Starts a program, given by its path, without a shell and with /dev/null as standard input. Throws Failure
// (kInstallation).
pid_t startChild(const std::vector<std::string>& command, const ChildOptions& options);

// Starts a program and waits for it. Returns its exit code, or 128 + the number of the signal that ended it.
// The process must not ignore SIGCHLD.
int runChild(const std::vector<std::string>& command, const ChildOptions& options);

// Exit code, or 128 + the number of the signal, of a status of waitpid().
int exitCodeOf(int status);

// Running child processes that the given thread of this process started.
std::vector<pid_t> childrenOf(pid_t thread);

// Server of a sample installation: a background process with a pid file.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "sandbox/SandboxFolder.h"

// "127.0.0.1,PORT", as the store and sqlcmd write a server.
std::string addressOf(int port);

struct RunningServer {
    pid_t pid = -1;
    int port = 0;
};

// Returns the running server. Compares the start time as well, because another process may have got its pid.
std::optional<RunningServer> findServer(const SandboxFolder& folder);

// Starts tsqlbox on a port (0: any free one) and waits until it listens. Signals stay blocked meanwhile
// (InterruptDelay). Throws Failure.
RunningServer startServer(const SandboxFolder& folder, int port);

// Stops the server and waits for its end. Throws Failure if it does not end.
void stopServer(const SandboxFolder& folder, const RunningServer& server);

// The server of a sample installation: started in the background, found again by its pid file.
#pragma once

#include <sys/types.h>

#include <optional>

#include "sandbox/SandboxFolder.h"

struct RunningServer {
    pid_t pid = -1;
    int port = 0;
};

// The server that startServer() left running, if it still does. Another process that got its number since is
// told apart by its start time.
std::optional<RunningServer> findServer(const SandboxFolder& folder);

// Starts tsqlbox on a port (0: any free one) and waits until it listens. Throws Failure.
RunningServer startServer(const SandboxFolder& folder, int port);

// Ends it and waits until it is gone. Throws Failure when it does not end.
void stopServer(const SandboxFolder& folder, const RunningServer& server);

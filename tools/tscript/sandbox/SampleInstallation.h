// Creation of a sample installation with its server.
#pragma once

#include "console/Secret.h"
#include "sandbox/SandboxFolder.h"
#include "sandbox/SandboxServer.h"

inline constexpr const char* kSandboxLogin = "sa";

// Throws Failure (kInstallation).
Secret readSandboxPassword(const SandboxFolder& folder);

// Starts the server, on any free port if `port` is 0, and creates the installation if it is not complete. The
// caller holds the folder's lock, and ZEPHRA_REGISTRY names the folder's store. Throws Failure; the server is
// then stopped.
RunningServer startSampleInstallation(const SandboxFolder& folder, int port);

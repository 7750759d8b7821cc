// Encryption of a connection, for the options -N and -C.
#pragma once

#include <string>

#include "ServerProbe.h"
#include "options/Options.h"
#include "options/ServerName.h"

namespace sqlcmd {

// Returns the encryption that the options ask for together: a trusted certificate is not verified.
Encryption encryptionOf(const Options& options);

// Returns the section of FreeTDS's configuration for the server, with the encryption that the options ask
// for. Throws ToolError for a name that the configuration cannot hold.
std::string encryptedServer(const ServerName& server, const Options& options);

// Returns what the options demand of the server, which has a port or no instance.
hostlayer::ProbeTarget probeTarget(const ServerName& server, const Options& options);

}  // namespace sqlcmd

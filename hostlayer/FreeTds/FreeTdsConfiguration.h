// Configuration of the FreeTDS driver for servers whose certificate is verified. FreeTDS reads the settings
// for verification only from a configuration file (freetds.conf(5)), and only for a connection string with
// `Servername`, which names a section of that file.
#pragma once

#include <string>

namespace freetds {

struct VerifiedServer {
    std::string host;      // the certificate must be valid for this name or address
    std::string instance;  // used without a port
    std::string port;
    std::string caFile;  // PEM file; empty: the host's trusted authorities
    auto operator<=>(const VerifiedServer&) const = default;
};

// Adds a section for the server, if there is none yet, and returns its name. The file is in memory; the
// environment variable FREETDSCONF is set to it by the first call, and from then on this process no longer
// uses any other freetds.conf. Returns "" for a value that the file cannot hold, and if the file or the
// CA file cannot be opened. Thread-safe.
std::string verifiedSection(const VerifiedServer& server);

}  // namespace freetds

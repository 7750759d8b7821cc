// Configuration of FreeTDS for encrypted servers. FreeTDS reads the settings for verification only from a
// configuration file (freetds.conf(5)): its ODBC driver for a connection string with `Servername`, which
// names a section of that file, DB-Library for a section in place of the server's name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace freetds {

enum class Encryption { Verify, Require, Off };

struct EncryptedServer {
    std::string host;      // with Verify, the certificate must be valid for this name or address
    std::string instance;  // used without a port
    std::string port;
    std::string caFile;  // with Verify: PEM file; empty: the host's trusted authorities
    Encryption encryption = Encryption::Verify;
    auto operator<=>(const EncryptedServer&) const = default;
};

// Adds a section for the server, if there is none yet, and returns its name. The file is in memory, one for
// each process, forked ones included; the environment variable FREETDSCONF is set to it, and from then on the
// process no longer uses any other freetds.conf. Returns "" for a value that the file cannot hold, and if the
// file (which needs /proc) or the CA file cannot be opened. Thread-safe.
std::string encryptedSection(const EncryptedServer& server);

// Returns the server of a section that encryptedSection() has added. Thread-safe.
std::optional<EncryptedServer> serverOfSection(std::string_view section);

}  // namespace freetds

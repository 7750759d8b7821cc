// Connection strings for SQL Server's ODBC drivers (ODBC Programmer's Reference, SQLDriverConnect: attributes
// `keyword=value;`, a value with special characters between braces, a closing brace in it doubled). All
// strings are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ServerAddress.h"
#include "ServerProbe.h"

namespace hostlayer {

struct ConnectionSettings {
    std::string driver;      // a name of odbcinst.ini, or the path of a driver library
    std::string attributes;  // appended to every connection string unchanged
    std::string encryption;  // verify, require, off, or empty: as the request and the attributes say
    std::string caFile;      // for verify with FreeTDS; empty: the host's trusted authorities
};

// The strings that are views must outlive the request.
struct ConnectionRequest {
    ServerAddress server;
    std::string_view database;
    std::string_view user;
    std::string_view password;
    bool windowsAuthentication = false;  // user and password are not used
    bool encrypt = false;                // not used if the settings set encryption
};

// Builds the connection string, `text`, which holds the password. False, with the reason in `problem`, when
// the driver's name is too long, the settings contradict each other, FreeTDS cannot verify the server, or the
// driver has no notation for one of the values. The reason does not quote the value.
bool makeConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request,
                          std::string& text, std::string& problem);

// Returns what a connection string of makeConnectionString() for FreeTDS demands of which server. Empty for
// other drivers, which name the reason of a failure themselves, and for an instance without a port.
std::optional<ProbeTarget> probeTargetOf(std::string_view connectionString);

}  // namespace hostlayer

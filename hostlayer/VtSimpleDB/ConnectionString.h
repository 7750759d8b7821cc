// Connection strings for SQL Server's ODBC drivers (ODBC Programmer's Reference, SQLDriverConnect: attributes
// `keyword=value;`, a value with special characters between braces, a closing brace in it doubled). All
// strings are UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace hostlayer {

struct ServerAddress {
    std::string host;
    std::string instance;  // empty: the default instance, or a port is given
    std::string port;      // empty: the default port, or the one of the named instance
};

// Parses `host`, `host\instance`, `host,port` and `host\instance,port`, each also after `tcp:`. The hosts `.`
// and `(local)` become `localhost`; a port replaces the instance. False, with the reason in `problem`,
// without a host or with a port that is not a number from 1 to 65535.
bool parseServer(std::string_view server, ServerAddress& address, std::string& problem);

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
// the settings contradict each other or the driver has no notation for one of the values. The reason does not
// quote the value.
bool makeConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request,
                          std::string& text, std::string& problem);

}  // namespace hostlayer

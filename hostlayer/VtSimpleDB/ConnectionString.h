// ODBC connection strings (ODBC Programmer's Reference, SQLDriverConnect) for SQL Server drivers.
#pragma once

#include <string>
#include <string_view>

namespace hostlayer {

// Where a server listens, from the way SQL Server people write it.
struct ServerAddress {
    std::string host;
    std::string instance;  // empty: none, or a port makes it needless
    std::string port;      // empty: the driver finds it
};

// Takes `host`, `host\instance`, `host,port`, each also after `tcp:`; `.` and `(local)` are this machine.
// False and the reason for anything else.
bool parseServer(std::string_view server, ServerAddress& address, std::string& problem);

struct ConnectionSettings {
    std::string driver;      // a name in odbcinst.ini, or a driver library's path
    std::string attributes;  // put into every connection string as they stand
};

struct ConnectionRequest {
    ServerAddress server;
    std::string_view database;
    std::string_view user;
    std::string_view password;
    bool windowsAuthentication = false;
    bool encrypt = false;
};

// False and the reason when a value cannot be handed to the driver; no reason quotes a value.
bool makeConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request,
                          std::string& text, std::string& problem);

}  // namespace hostlayer

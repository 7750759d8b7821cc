// Server names as SQL Server people write them.
#pragma once

#include <string>
#include <string_view>

namespace hostlayer {

constexpr const char* kDefaultPort = "1433";

struct ServerAddress {
    std::string host;
    std::string instance;  // empty: the default instance, or a port is given
    std::string port;      // empty: the default port, or the one of the named instance
};

// Parses `host`, `host\instance`, `host,port` and `host\instance,port`, each also after `tcp:`. The hosts `.`
// and `(local)` become `localhost`; a port replaces the instance. False, with the reason in `problem`,
// without a host or with a port that is not a number from 1 to 65535.
bool parseServer(std::string_view server, ServerAddress& address, std::string& problem);

}  // namespace hostlayer

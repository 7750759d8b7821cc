// A server as SQL Server people write it.
#pragma once

#include <string>
#include <string_view>

namespace sqlcmd {

// From: host, host\instance, host,port, tcp:host,port, [::1],port. Throws UsageError for anything else.
struct ServerName {
    std::string host;      // without the brackets of an IPv6 address
    std::string instance;  // empty: the default one
    int port = 0;          // 0: not given
};

ServerName parseServerName(std::string_view text);

}  // namespace sqlcmd

// Server names as SQL Server's tools accept them.
#pragma once

#include <string>
#include <string_view>

#include "options/Options.h"

namespace sqlcmd {

struct ServerName {
    std::string host;      // without the brackets of an IPv6 address
    std::string instance;  // empty: the default instance
    int port = 0;          // 0: not given
};

// Parses host, host\instance, host,port and host\instance,port, each also after "tcp:". The host may be an
// IPv6 address in brackets; "." and "(local)" become "localhost". Throws UsageError for anything else.
ServerName parseServerName(std::string_view text);

// Returns the server to connect to: that of -S, with -A the port of its administrator connection. Throws
// UsageError.
ServerName serverOf(const Options& options);

}  // namespace sqlcmd

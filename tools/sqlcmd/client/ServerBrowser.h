// Questions to the SQL Server Browser service (SQL Server Resolution Protocol, MC-SQLR).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sqlcmd {

// Returns the names of the servers of this host and its networks, as "HOST" or "HOST\INSTANCE", sorted. Waits
// two seconds for answers.
std::vector<std::string> findServers();

// Returns the port of the administrator connection of a host's instance; nullopt without an answer in two
// seconds.
std::optional<int> findAdminPort(const std::string& host, const std::string& instance);

// Returns the names in a response (SVR_RESP), empty for an invalid one.
std::vector<std::string> serversIn(std::string_view response);

}  // namespace sqlcmd

// Kerberos tickets of FreeTDS's Windows authentication. FreeTDS does not report why it gets none.
#pragma once

#include <string>
#include <string_view>

namespace freetds {

// Requests a ticket for SQL Server on a host and port as FreeTDS does, which uses the canonical name of a
// host without a domain. Returns the service principal with the reason if there is none, else "".
std::string ticketProblem(const std::string& host, const std::string& port);

// The same for a service principal.
std::string ticketProblemOf(const std::string& servicePrincipal);

// The same for an ODBC connection string. Returns "" without Windows authentication and for a server without
// a port.
std::string ticketProblem(std::string_view connectionString);

// Whether an ODBC connection string asks for Windows authentication.
bool usesTicket(std::string_view connectionString);

}  // namespace freetds

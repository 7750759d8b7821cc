// A login to a server over ODBC, and whether another user of the same connection string may continue it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Odbc.h"
#include "ServerRequest.h"
#include "VtCauses.h"

namespace hostlayer {

// Disconnects and wipes the connection string on destruction.
class Login {
  public:
    Login(std::string_view connectionString, bool readOnly);
    ~Login();
    Login(const Login&) = delete;
    Login& operator=(const Login&) = delete;

    // Logs in. A failure is in the debug log. The driver has the time limit as well.
    bool connect(const RequestLimits& limits);

    bool isFor(std::string_view connectionString, bool readOnly) const;
    // Returns a statement handle; empty, and reported, on a failure. The login must outlive it.
    OdbcHandle newStatement() const;
    const std::vector<ServerSocket>& sockets() const { return m_sockets; }

    // True if the session is as it was after the login and this process made the login.
    bool isReusable() const;
    void forbidReuse() { m_isClean = false; }

    // True after an INSERT: @@IDENTITY and SCOPE_IDENTITY() may have its values.
    bool hasIdentity() const { return m_hasIdentity; }
    void noteIdentity() { m_hasIdentity = true; }

    // Returns a login that is not connected, of the same connection string.
    std::unique_ptr<Login> another() const { return std::make_unique<Login>(m_connectionString, m_readOnly); }

    // Ends the connection and waits, at most a second, until the server has ended the session: the session's
    // database is free then. Does nothing if the socket is not known.
    void endSession() const;

    // Asks a driver that supports it to reset the session with the next statement.
    void requestReset() const;

    // Restores the default of NOCOUNT, for a batch that may depend on it.
    void restoreRowCounts() const { runs(u"SET NOCOUNT OFF"); }

    // True if the driver has found the connection closed, or its sockets are.
    bool hasEnded() const;

    // False if the server has closed the connection. Takes a round trip only if the sockets do not say.
    bool isAlive() const;

  private:
    bool driverConnects(std::u16string& text, ServerRequest& request) const;
    bool mayHaveMissedFirstTicket() const;
    void reportReason() const;
    bool socketsAreQuiet() const;
    bool socketsAreClosed() const;
    bool runs(std::u16string batch) const;

    std::string m_connectionString;
    std::string m_identity;  // that Windows authentication uses
    bool m_readOnly;
    pid_t m_process;
    bool m_isConnected = false;
    bool m_isClean = true;
    bool m_hasIdentity = false;
    RequestLimits m_limits;
    std::vector<ServerSocket> m_sockets;  // one of them is the connection's; empty: not known
    OdbcHandle m_environment;
    OdbcHandle m_connection;
};

// Logs a failure that is not the driver's, and notes it as a cause.
void reportError(VtCause::Place place, const std::string& text);

// Converts the whole text. If it is not UTF-8, reports `refusal` with the position and returns false: a
// DELETE cut off there might have lost its WHERE.
bool convertOrReport(VtCause::Place place, std::string_view text, std::u16string& wide, const char* refusal);

}  // namespace hostlayer

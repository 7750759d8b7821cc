// The connection to the server, and a batch's statement on it.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Diagnostic.h"
#include "Driver.h"
#include "Options.h"
#include "ServerName.h"

namespace sqlcmd {

// Owns one ODBC handle of the given kind.
class Handle {
  public:
    Handle(SQLSMALLINT type, SQLHANDLE parent, DriverFunctions functions = {});
    ~Handle();
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    SQLHANDLE get() const { return m_handle; }
    std::vector<Diagnostic> diagnostics() const { return diagnosticsOf(m_functions, m_type, m_handle); }

  private:
    DriverFunctions m_functions;
    SQLSMALLINT m_type;
    SQLHANDLE m_handle = SQL_NULL_HANDLE;
};

// The login was refused, or there is no server.
struct LoginError : std::exception {
    explicit LoginError(std::vector<Diagnostic> what) : diagnostics(std::move(what)) {}
    std::vector<Diagnostic> diagnostics;
};

class Connection {
  public:
    // Logs in. Throws LoginError. Wipes the password of the options.
    explicit Connection(Options& options);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const Driver& driver() const { return m_driver; }
    int queryTimeout() const { return m_queryTimeout; }
    bool isDead() const;

  private:
    void logIn(std::string& connectionString);

    Handle m_environment;
    Handle m_connection;
    Driver m_driver;
    int m_queryTimeout;
    bool m_connected = false;
};

// One batch on its way. Every function gives back ODBC's return code; what a code other than SQL_SUCCESS
// means stands in diagnostics().
class Statement {
  public:
    explicit Statement(const Connection& connection);

    SQLRETURN execute(const std::string& batch);
    SQLRETURN nextResult();
    SQLRETURN fetch();
    std::vector<Diagnostic> diagnostics() const { return m_handle.diagnostics(); }

    int columnCount() const;
    // -1 where the server counted nothing.
    long long rowCount() const;
    SQLHSTMT handle() const { return m_handle.get(); }
    const DriverFunctions& functions() const { return m_functions; }

  private:
    const DriverFunctions& m_functions;
    Handle m_handle;
};

// For SQLDriverConnect. The driver is SQLCMD_ODBC_DRIVER (a name of odbcinst.ini or a library's path),
// FreeTDS by default. Throws ToolError for a value that the driver cannot be given.
std::string connectionString(const Options& options, std::string_view driver);

}  // namespace sqlcmd

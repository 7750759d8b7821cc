// Connection to SQL Server through ODBC, and the statement that runs a batch on it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "client/Client.h"
#include "client/Driver.h"
#include "client/OdbcDiagnostics.h"
#include "options/Options.h"
#include "options/ServerName.h"

namespace sqlcmd {

// Owner of an ODBC handle.
class Handle {
  public:
    // Throws std::bad_alloc.
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

class Connection {
  public:
    // Connects and overwrites the password in `options`. With an old password, which is overwritten, too, the
    // login changes it to the password in `options`; it may have expired. Throws LoginError; ToolError for a
    // value that the connection string cannot hold.
    Connection(Options& options, std::string_view driver, std::string oldPassword = {});
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const Driver& driver() const { return m_driver; }
    int queryTimeout() const { return m_queryTimeout; }  // seconds; 0: none
    void setQueryTimeout(int seconds) { m_queryTimeout = seconds; }
    bool isDead() const;

  private:
    void logIn(std::string& connectionString);

    Handle m_environment;
    Handle m_connection;
    Driver m_driver;
    int m_queryTimeout;
    bool m_connected = false;
};

// A batch that is running. execute(), nextResult() and fetch() return ODBC's return code; the messages of a
// code other than SQL_SUCCESS are in diagnostics() until the next call. Must not outlive the connection.
class Statement {
  public:
    explicit Statement(const Connection& connection);

    SQLRETURN execute(const std::string& batch);
    SQLRETURN nextResult();
    SQLRETURN fetch();
    std::vector<Diagnostic> diagnostics() const { return m_handle.diagnostics(); }

    int columnCount() const;     // 0: the current result has no rows
    long long rowCount() const;  // -1: the server has not sent a count
    SQLHSTMT handle() const { return m_handle.get(); }
    const DriverFunctions& functions() const { return m_functions; }

  private:
    const DriverFunctions& m_functions;
    Handle m_handle;
};

// Returns the connection string, which holds the password, for SQLDriverConnect (ODBC Programmer's
// Reference). `driver` is a name of odbcinst.ini or a library's path. Throws ToolError for a value for which
// the driver has no notation, UsageError for an invalid server name.
std::string connectionString(const Options& options, std::string_view driver);

}  // namespace sqlcmd

// Hand-written ODBC, the reference for the library's: one environment, a connection, a statement.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>

namespace bench {

class HandConnection {
  public:
    explicit HandConnection(const std::string& connectionString);  // throws std::runtime_error
    ~HandConnection();
    HandConnection(const HandConnection&) = delete;
    HandConnection& operator=(const HandConnection&) = delete;

    SQLHSTMT statement() const { return m_statement; }
    void execute(const std::string& sql) const;
    // Runs a query and fetches its rows, of which at most four columns are bound. Returns the number of rows.
    int readAll(const std::string& sql) const;

  private:
    SQLHDBC m_connection = nullptr;
    SQLHSTMT m_statement = nullptr;
};

}  // namespace bench

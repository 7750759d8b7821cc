// ODBC as a program without the library writes it: one environment, a connection, its statement.
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
    // Runs a query and reads its rows, at most four columns wide, and drops them. Returns their number.
    int readAll(const std::string& sql) const;

  private:
    SQLHDBC m_connection = nullptr;
    SQLHSTMT m_statement = nullptr;
};

}  // namespace bench

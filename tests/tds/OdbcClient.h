// A connection through Debian's FreeTDS driver, for tests that use the server as programs do.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>
#include <string_view>
#include <vector>

namespace support {

struct Diagnostic {
    int number;
    int line;
    std::string text;
    bool operator==(const Diagnostic&) const = default;
};

class OdbcClient {
  public:
    // Throws std::runtime_error with the driver's text.
    explicit OdbcClient(const std::string& connectionString);
    ~OdbcClient();
    OdbcClient(const OdbcClient&) = delete;
    OdbcClient& operator=(const OdbcClient&) = delete;

    // Runs a batch to its end: the rows of all result sets, one string a row, cells joined by "|".
    std::vector<std::string> run(const std::string& batch);
    std::string value(const std::string& batch);  // the first row, or the first message's text
    const std::vector<Diagnostic>& diagnostics() const { return m_diagnostics; }
    SQLHSTMT statement() const { return m_statement; }
    SQLHDBC connection() const { return m_connection; }
    // Diagnostics of a handle's last call.
    static std::vector<Diagnostic> diagnosticsOf(SQLSMALLINT type, SQLHANDLE handle);

  private:
    void fetchAll(std::vector<std::string>& rows) const;
    void keepDiagnostics();
    std::string cell(SQLUSMALLINT column) const;

    SQLHENV m_environment = nullptr;
    SQLHDBC m_connection = nullptr;
    SQLHSTMT m_statement = nullptr;
    std::vector<Diagnostic> m_diagnostics;
};

}  // namespace support

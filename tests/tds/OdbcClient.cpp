#include "OdbcClient.h"

#include <stdexcept>

namespace support {
namespace {

constexpr SQLSMALLINT kDiagnosticLine = -1154;  // SQL Server's own field of a diagnostic record

SQLCHAR* sqlText(const std::string& text) {
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str()));
}

}  // namespace

std::vector<Diagnostic> OdbcClient::diagnosticsOf(SQLSMALLINT type, SQLHANDLE handle) {
    std::vector<Diagnostic> found;
    SQLCHAR state[6];
    SQLCHAR text[4096];
    SQLINTEGER number = 0;
    for (SQLSMALLINT i = 1;
         SQL_SUCCEEDED(SQLGetDiagRec(type, handle, i, state, &number, text, sizeof text, nullptr)); ++i) {
        SQLUSMALLINT line = 0;
        SQLGetDiagField(type, handle, i, kDiagnosticLine, &line, 0, nullptr);
        std::string whole = reinterpret_cast<char*>(text);
        found.push_back({number, line, whole.substr(whole.rfind(']') + 1)});
    }
    return found;
}

OdbcClient::OdbcClient(const std::string& connectionString) {
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m_environment);
    SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &m_connection);
    const SQLRETURN result = SQLDriverConnect(m_connection, nullptr, sqlText(connectionString), SQL_NTS,
                                              nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result)) {
        std::string text;
        for (const Diagnostic& diagnostic : diagnosticsOf(SQL_HANDLE_DBC, m_connection))
            text += diagnostic.text + "\n";
        SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
        SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
        throw std::runtime_error(text);
    }
    SQLAllocHandle(SQL_HANDLE_STMT, m_connection, &m_statement);
}

OdbcClient::~OdbcClient() {
    SQLFreeHandle(SQL_HANDLE_STMT, m_statement);
    SQLDisconnect(m_connection);
    SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
    SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
}

std::string OdbcClient::cell(SQLUSMALLINT column) const {
    std::string text;
    char block[1000];
    SQLLEN length = 0;
    SQLRETURN result = SQL_SUCCESS_WITH_INFO;
    while (result == SQL_SUCCESS_WITH_INFO) {
        result = SQLGetData(m_statement, column, SQL_C_CHAR, block, sizeof block, &length);
        if (length == SQL_NULL_DATA) return "NULL";
        if (SQL_SUCCEEDED(result)) text += block;
    }
    return text;
}

void OdbcClient::fetchAll(std::vector<std::string>& rows) const {
    SQLSMALLINT columns = 0;
    SQLNumResultCols(m_statement, &columns);
    while (columns > 0 && SQL_SUCCEEDED(SQLFetch(m_statement))) {
        std::string row;
        for (SQLUSMALLINT i = 1; i <= columns; ++i) row += (i > 1 ? "|" : "") + cell(i);
        rows.push_back(row);
    }
}

void OdbcClient::keepDiagnostics() {
    for (const Diagnostic& diagnostic : diagnosticsOf(SQL_HANDLE_STMT, m_statement))
        m_diagnostics.push_back(diagnostic);
}

std::vector<std::string> OdbcClient::run(const std::string& batch) {
    m_diagnostics.clear();
    std::vector<std::string> rows;
    SQLExecDirect(m_statement, sqlText(batch), SQL_NTS);
    keepDiagnostics();
    SQLRETURN more = SQL_SUCCESS;
    do {
        fetchAll(rows);
        more = SQLMoreResults(m_statement);
        if (more != SQL_NO_DATA) keepDiagnostics();
    } while (SQL_SUCCEEDED(more));
    SQLFreeStmt(m_statement, SQL_CLOSE);
    return rows;
}

std::string OdbcClient::value(const std::string& batch) {
    const std::vector<std::string> rows = run(batch);
    if (!rows.empty()) return rows.front();
    return m_diagnostics.empty() ? "" : m_diagnostics.front().text;
}

}  // namespace support

#include "HandOdbc.h"

#include "Bench.h"

namespace bench {
namespace {

SQLHENV environment() {
    static const SQLHENV handle = [] {
        SQLHENV made = nullptr;
        check(SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &made)),
              "the ODBC environment cannot be allocated");
        SQLSetEnvAttr(made, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        return made;
    }();
    return handle;
}

SQLCHAR* sqlText(const std::string& text) {
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str()));
}

}  // namespace

HandConnection::HandConnection(const std::string& connectionString) {
    SQLAllocHandle(SQL_HANDLE_DBC, environment(), &m_connection);
    const SQLRETURN result = SQLDriverConnect(m_connection, nullptr, sqlText(connectionString), SQL_NTS,
                                              nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result)) SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
    check(SQL_SUCCEEDED(result), "hand-written ODBC cannot connect");
    SQLAllocHandle(SQL_HANDLE_STMT, m_connection, &m_statement);
}

HandConnection::~HandConnection() {
    SQLFreeHandle(SQL_HANDLE_STMT, m_statement);
    SQLDisconnect(m_connection);
    SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
}

void HandConnection::execute(const std::string& sql) const {
    check(SQL_SUCCEEDED(SQLExecDirect(m_statement, sqlText(sql), SQL_NTS)),
          "hand-written ODBC fails: " + sql);
}

int HandConnection::readAll(const std::string& sql) const {
    execute(sql);
    SQLSMALLINT columns = 0;
    SQLNumResultCols(m_statement, &columns);
    char cells[4][256];
    SQLLEN lengths[4];
    for (SQLUSMALLINT i = 0; i < columns && i < 4; ++i)
        SQLBindCol(m_statement, i + 1U, SQL_C_CHAR, cells[i], sizeof cells[i], &lengths[i]);
    int rows = 0;
    while (SQL_SUCCEEDED(SQLFetch(m_statement))) ++rows;
    return rows;
}

}  // namespace bench

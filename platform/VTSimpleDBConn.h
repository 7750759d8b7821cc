// Direct connection to a database server.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "PlatformExport.h"

// One column's value in the current row.
class VT_PLATFORM_EXPORT VTDBDataTypeBase {
  public:
    bool isNull() const { return m_null; }
    // The value as UTF-8 text; NULL is the empty text. Valid until the next row is fetched.
    std::string_view asUtf8() const { return m_text; }

  private:
    friend class VTDBAutoBindResult;
    std::string_view m_text;
    bool m_null = true;
};

// The rows of a statement, bound by VTSimpleDBConnObject::autoBind.
class VT_PLATFORM_EXPORT VTDBAutoBindResult {
  public:
    VTDBAutoBindResult();
    ~VTDBAutoBindResult();
    VTDBAutoBindResult(const VTDBAutoBindResult&) = delete;
    VTDBAutoBindResult& operator=(const VTDBAutoBindResult&) = delete;

    int columnCount() const;
    // 0: the next row stands in the columns; 1: there is none; -1: the fetch failed.
    int getNextRow();
    // Column from 0; one beyond the last is NULL.
    const VTDBDataTypeBase& column(int index) const;

  private:
    friend class VTSimpleDBConnObject;
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// A connection. One thread at a time. Results are 0 for success unless said otherwise; every diagnostic
// (SQLSTATE, native number, text) goes to the debug log, a password never does.
class VT_PLATFORM_EXPORT VTSimpleDBConnObject {
  public:
    VTSimpleDBConnObject();
    ~VTSimpleDBConnObject();  // closes
    VTSimpleDBConnObject(const VTSimpleDBConnObject&) = delete;
    VTSimpleDBConnObject& operator=(const VTSimpleDBConnObject&) = delete;

    // Server as `host`, `host\instance`, `host,port` or `tcp:host,port`. With `windowsAuthentication`
    // no user and password are put in. `encrypt` asks the driver for an encrypted connection.
    std::string getConnectionString(const char* server, const char* database, const char* user,
                                    const char* password, bool windowsAuthentication, bool encrypt) const;
    // An open connection is closed first. `readOnly` opens it for reading only.
    int OpenSQLConnectionUsingConnectionString(const char* connectionString, bool readOnly);
    int CloseSQLConnection();

    // Runs a statement or batch; results left from the one before are dropped. `prepared` goes by way of
    // a prepared statement. An error in any of the batch's statements that comes before its first rows is
    // reported here.
    int executeQuery(const char* sql, bool prepared);
    // Binds the columns of the statement's first result set. 0: bound; 1: the statement has no columns
    // (no rows will come); -1: failure. The result must not outlive the connection.
    int autoBind(VTDBAutoBindResult& result);

    struct Impl;

  private:
    std::unique_ptr<Impl> m_impl;
};

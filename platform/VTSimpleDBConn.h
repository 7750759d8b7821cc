// Direct connection to a database server.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "PlatformExport.h"

// Value of one column in the current row.
class VT_PLATFORM_EXPORT VTDBDataTypeBase {
  public:
    bool isNull() const { return m_null; }
    // The value in UTF-8; NULL is an empty string. Valid until the next row is fetched.
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
    // Fetches the next row into the columns. 0: fetched; 1: no more rows; -1: the fetch failed.
    int getNextRow();
    // `index` from 0; beyond the last column the value is NULL.
    const VTDBDataTypeBase& column(int index) const;

  private:
    friend class VTSimpleDBConnObject;
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// Connection for one thread at a time. Results are 0 for success unless stated otherwise. Every diagnostic
// record (SQLSTATE, native number, message) goes to the debug log; a password never does.
class VT_PLATFORM_EXPORT VTSimpleDBConnObject {
  public:
    VTSimpleDBConnObject();
    ~VTSimpleDBConnObject();  // closes
    VTSimpleDBConnObject(const VTSimpleDBConnObject&) = delete;
    VTSimpleDBConnObject& operator=(const VTSimpleDBConnObject&) = delete;

    // Builds a connection string. `server`: `host`, `host\instance`, `host,port` or `tcp:host,port`. With
    // `windowsAuthentication` it contains no user and password. `encrypt` requests an encrypted connection.
    std::string getConnectionString(const char* server, const char* database, const char* user,
                                    const char* password, bool windowsAuthentication, bool encrypt) const;
    // Closes an open connection and opens a new one. `readOnly` announces to the driver that nothing will be
    // changed; it does not prevent changes.
    int OpenSQLConnectionUsingConnectionString(const char* connectionString, bool readOnly);
    int CloseSQLConnection();

    // Executes a statement or batch, as a prepared statement with `prepared`. Remaining results of the
    // previous one are dropped. Reports errors of the batch's statements up to its first rows.
    int executeQuery(const char* sql, bool prepared);
    // Binds the columns of the first result set. 0: bound; 1: the statement has no columns and returns no
    // rows; -1: failure. The result must not outlive the connection.
    int autoBind(VTDBAutoBindResult& result);

    struct Impl;

  private:
    std::unique_ptr<Impl> m_impl;
};

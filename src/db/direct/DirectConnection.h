// The direct connection of a database object.
#pragma once

#include "parts/DatabaseParts.h"

class DirectConnection {
  public:
    DirectConnection(const ServerAccount& account, VTSimpleDBConnObject*& connection)
        : m_account(account), m_connection(connection) {}

    // Opens the connection, or opens it anew. Null arguments mean the account's values; the data source
    // appears in the debug log only.
    bool open(const char* dataSource = nullptr, const char* userName = nullptr,
              const char* password = nullptr);
    void close();
    // Runs a statement on the open connection; false without one.
    bool execute(const char* sql);
    // Opens the connection, runs a statement and closes it. After a failed statement the connection stays
    // open.
    bool executeOnce(const char* sql);

  private:
    ServerAccount m_account;
    VTSimpleDBConnObject*& m_connection;
};

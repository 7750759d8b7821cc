// Savepoint that makes several SQLite statements atomic. Without commit(), the destructor undoes them.
#pragma once

#include "storage/Connection.h"

namespace tsql {

class Atomic {
  public:
    // Acquires the write lock of the schema before anything is read: only then does SQLite wait for another
    // writer.
    Atomic(Connection& connection, const std::string& schema) : Atomic(connection) {
        m_connection.run("DELETE FROM " + schema + ".tsqlbox_objects WHERE 0");
    }
    ~Atomic() {
        if (m_done) return;
        sqlite3_exec(m_connection.handle(), "ROLLBACK TO tsqlbox_atomic; RELEASE tsqlbox_atomic", nullptr,
                     nullptr, nullptr);
    }
    Atomic(const Atomic&) = delete;
    Atomic& operator=(const Atomic&) = delete;

    void commit() {
        m_connection.run("RELEASE tsqlbox_atomic");
        m_done = true;
    }

  private:
    explicit Atomic(Connection& connection) : m_connection(connection) {
        m_connection.run("SAVEPOINT tsqlbox_atomic");
    }

    Connection& m_connection;
    bool m_done = false;
};

}  // namespace tsql

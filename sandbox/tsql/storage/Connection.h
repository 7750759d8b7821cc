// A session's SQLite connection: attached databases, prepared statements, failures.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "storage/Quoting.h"
#include "storage/Storage.h"
#include "types/Values.h"

namespace tsql {

// What SQLite answered; the extended result code and its text.
struct SqliteFailure : std::runtime_error {
    SqliteFailure(int resultCode, const std::string& text) : std::runtime_error(text), code(resultCode) {}
    int code;
};

class Connection;

// A prepared statement on loan from its connection's cache.
class PreparedStatement {
  public:
    PreparedStatement(Connection& connection, std::string sql);
    ~PreparedStatement();
    PreparedStatement(const PreparedStatement&) = delete;
    PreparedStatement& operator=(const PreparedStatement&) = delete;

    void bind(int index, const CellView& value);  // from 1; the value must outlive the steps
    void bindAll(std::span<const Value> values);
    bool step();  // false behind the last row; throws SqliteFailure
    int columnCount() const { return sqlite3_column_count(m_statement); }
    CellView cell(int column) const;  // from 0
    std::string text(int column) const;
    std::int64_t integer(int column) const { return sqlite3_column_int64(m_statement, column); }

  private:
    Connection& m_connection;
    std::string m_sql;
    sqlite3_stmt* m_statement = nullptr;
};

class Connection {
  public:
    // `cancelled` is asked while a statement runs or waits for another session, and ends it.
    Connection(Storage& storage, std::function<bool()> cancelled);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    sqlite3* handle() { return m_handle.get(); }
    // How long a statement waits for a lock; negative: as long as usual.
    void setLockTimeout(std::chrono::milliseconds timeout);
    bool inTransaction() { return sqlite3_get_autocommit(handle()) == 0; }

    // Attaches the database when it is not yet, and gives its schema's name, quoted. Throws SqlError 911.
    std::string attach(std::string_view database);
    // Takes the right to write the database, before anything else of it is looked at in the transaction:
    // SQLite waits for another writer only then.
    void lock(std::string_view database);
    void detach(std::string_view database);
    void detachAllBut(std::string_view database);
    bool isAttached(std::string_view database) const;

    // Schemas whose catalogue's tables are known to be there, until they are detached.
    bool hasCatalogue(const std::string& schema) const { return m_catalogues.contains(schema); }
    void noteCatalogue(const std::string& schema) { m_catalogues.insert(schema); }

    void run(const std::string& sql, std::span<const Value> values = {});
    // The number in the first row's first column; nothing without a row.
    std::optional<std::int64_t> number(const std::string& sql, std::span<const Value> values = {});

  private:
    friend class PreparedStatement;
    sqlite3_stmt* borrow(const std::string& sql);
    void giveBack(const std::string& sql, sqlite3_stmt* statement);
    void dropStatements();
    void renewIndexes(const std::string& schema);
    static int waitForLock(void* self, int tries);
    static int isCancelled(void* self) { return static_cast<Connection*>(self)->m_cancelled(); }

    Storage& m_storage;
    std::function<bool()> m_cancelled;
    std::chrono::milliseconds m_lockTimeout{};
    std::chrono::steady_clock::time_point m_waitEnds;
    SqliteConnection m_handle;
    std::list<std::string> m_attached;  // keys of databases, the latest used first
    std::set<std::string> m_catalogues;
    std::list<std::pair<std::string, sqlite3_stmt*>> m_idle;  // the latest used first
};

}  // namespace tsql

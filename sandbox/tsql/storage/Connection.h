// SQLite connection of a session, with its attached databases and its cache of prepared statements.
#pragma once

#include <sqlite3.h>

#include <functional>
#include <list>
#include <set>

#include "storage/Storage.h"
#include "types/Values.h"

namespace tsql {

// Names and texts as SQLite's SQL quotes them.
std::string quotedName(std::string_view name);  // "a""b"
// prefix"a", prefix"b"
std::string quotedNames(const std::vector<std::string>& names, std::string_view prefix = {});
std::string quotedText(std::string_view text);  // 'a''b'

// Values in their storage form to and from SQLite.
CellView viewOf(sqlite3_value* value);
void giveResult(sqlite3_context* call, const Value& value);  // of a function of SQLite

class Connection;
using SqlStatements = std::list<std::pair<std::string, sqlite3_stmt*>>;

// A prepared statement, borrowed from the cache of its connection, which must outlive it.
class PreparedStatement {
  public:
    PreparedStatement(Connection& connection, std::string_view sql);
    // The values, which must outlive the steps, are those of ?1, ?2 ... version: of the catalogues, for which
    // the SQL is. For another one, SqliteFailure SQLITE_AUTH is thrown, at the first step at the latest.
    PreparedStatement(Connection& connection, std::string_view sql, std::span<const Value> values,
                      const std::optional<std::uint64_t>& version = {});
    ~PreparedStatement();
    PreparedStatement(PreparedStatement&&) = delete;  // neither moved nor copied

    bool step();  // false after the last row; throws SqliteFailure
    int columnCount() const { return sqlite3_column_count(m_statement); }
    // Columns count from 0. Values are not shared between threads.
    CellView cell(int column) const { return viewOf(sqlite3_column_value(m_statement, column)); }
    std::string text(int column) const;
    std::int64_t integer(int column) const { return sqlite3_column_int64(m_statement, column); }

  private:
    void bind(int index, const CellView& value);

    Connection& m_connection;
    SqlStatements m_entry;  // one
    sqlite3_stmt* m_statement = nullptr;
    bool m_hasVersion = false;
};

class Connection {
  public:
    // While a statement runs or waits for a lock, it ends if `cancelled` is true; `noteWait`: while it waits.
    Connection(Storage& storage, std::function<bool()> cancelled, std::function<void()> noteWait);
    ~Connection();

    sqlite3* handle() { return m_handle.get(); }
    // Time limit of waiting for a lock. A negative one restores the default, 10 s.
    void setLockTimeout(std::chrono::milliseconds timeout);
    bool inTransaction() { return sqlite3_get_autocommit(handle()) == 0; }
    // Whether a database is being read or written.
    bool hasSnapshot() { return sqlite3_txn_state(handle(), nullptr) != SQLITE_TXN_NONE; }
    bool hasSeveral() const { return m_attached.size() > 1; }  // databases

    // Attaches the database if it is not, and returns the quoted name of its schema. Throws SqlError 911.
    std::string attach(std::string_view database);
    // Acquires the write lock of a database. To be called before the transaction reads the database: only
    // then does SQLite wait for another writer.
    void lock(std::string_view database);
    void detach(std::string_view database);
    void readSchemas() {  // of all databases, if they have changed
        for (const auto& key : m_attached) number("SELECT 1 FROM " + quotedName(key) + ".sqlite_master");
    }
    std::uint64_t detaches() const { return m_detaches; }  // number of databases that were detached
    void detachAllBut(std::string_view database) {
        for (const auto& key : std::list(m_attached))
            if (key != databaseKey(database)) detach(key);
    }

    // Remember the attached schemas in which the tables of the catalogue exist.
    bool hasCatalogue(const std::string& schema) const { return m_catalogues.contains(schema); }
    void noteCatalogue(const std::string& schema) { m_catalogues.insert(schema); }

    void run(const std::string& sql, const std::vector<Value>& values = {});
    // Returns false if SQLite fails.
    bool tryRun(const std::string& sql) {
        return sqlite3_exec(handle(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    // Returns the integer in the first column of the first row, if there is a row.
    std::optional<std::int64_t> number(const std::string& sql, const std::vector<Value>& values = {});

  private:
    friend class PreparedStatement;
    SqlStatements borrow(std::string_view sql);
    void giveBack(SqlStatements& entry);
    void dropStatements();
    static int waitForLock(void* self, int tries);
    static int isCancelled(void* self) { return static_cast<Connection*>(self)->m_cancelled(); }
    // Table functions such as pragma_index_xinfo compile PRAGMAs while they run.
    static int mayCompile(void* self, int action, const char*, const char*, const char*, const char*) {
        const bool compiles = static_cast<Connection*>(self)->m_compiles || action == SQLITE_PRAGMA;
        return compiles ? SQLITE_OK : SQLITE_DENY;
    }

    Storage& m_storage;
    std::function<bool()> m_cancelled;
    std::function<void()> m_noteWait;
    std::chrono::milliseconds m_lockTimeout{};
    std::chrono::steady_clock::time_point m_waitEnds;
    SqliteConnection m_handle;
    std::list<std::string> m_attached;  // keys of databases, most recently used first
    std::uint64_t m_detaches = 0;
    std::set<std::string> m_catalogues;
    bool m_compiles = true;  // SQLite may compile statements: no statement of a version begins
    SqlStatements m_idle;    // most recently used first
};

// Savepoint that makes several SQLite statements atomic. Without commit(), the destructor undoes them.
class Atomic {
  public:
    // Acquires the write lock of the schema first, as Connection::lock() does.
    Atomic(Connection& connection, const std::string& schema) : Atomic(connection) {
        m_connection.run("DELETE FROM " + schema + ".tsqlbox_objects WHERE 0");
    }
    ~Atomic() {
        if (!m_done) m_connection.tryRun("ROLLBACK TO tsqlbox_atomic; RELEASE tsqlbox_atomic");
    }
    Atomic(Atomic&&) = delete;  // neither moved nor copied

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

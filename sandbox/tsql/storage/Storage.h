// Data directory, with one SQLite file for each database.
#pragma once

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "types/Finally.h"

namespace tsql {

// Error of SQLite: the extended result code and its text.
struct SqliteFailure : std::runtime_error {
    SqliteFailure(int resultCode, const std::string& text) : std::runtime_error(text), code(resultCode) {}
    explicit SqliteFailure(sqlite3* connection, const std::string& action = {})
        : SqliteFailure(sqlite3_extended_errcode(connection), action + sqlite3_errmsg(connection)) {}
    int code;
};
using SqliteConnection = std::unique_ptr<sqlite3, Deleter<&sqlite3_close_v2>>;

// Opens a database file, which SQLITE_OPEN_CREATE makes when it is missing: WAL, foreign keys on, a busy
// time-out of 10 s. Throws as openFile().
SqliteConnection openDatabaseFile(const std::filesystem::path& file, int create = 0);
// Opens a file with SQLite's flags and runs pragmas. Throws SqliteFailure with the file in its text.
SqliteConnection openFile(const std::filesystem::path& file, int flags, const std::string& pragmas);
// Runs statements without results. Throws SqliteFailure.
void execute(sqlite3* connection, const std::string& sql);

std::string databaseKey(std::string_view name);  // names with equal keys are one database

// Client of a session, as HOST_NAME() and similar functions report it.
struct Client {
    std::string login, host = {}, program = {};
};

// A session as sys.dm_exec_sessions and sys.dm_exec_requests show it.
struct SessionEntry {
    Client client;
    std::string database;
    std::chrono::system_clock::time_point begin, waited{};  // newest look at a lock that another one holds
    bool isRunning = false, hasTransaction = false;         // the latter may hold the database's write lock
};

// The databases of a server. Thread-safe.
class Storage {
  public:
    // Creates the directory (mode 0700) and the system databases if missing. Throws std::runtime_error, also
    // if another server uses the directory.
    explicit Storage(const std::filesystem::path& directory,
                     const std::vector<std::filesystem::path>& backupFolders = {});

    // Returns the names as they were created: master, tempdb, model, msdb, then the others, sorted. All
    // functions ignore the case of names.
    std::vector<std::string> databases() const;
    bool exists(std::string_view name) const { return !canonicalName(name).empty(); }
    // Returns the name as it was created; empty if there is no such database.
    std::string canonicalName(std::string_view name) const;
    // Path of the database's file, whether or not it exists.
    std::filesystem::path pathOf(std::string_view name) const;
    // Whether BACKUP may write the file: below the directory or a backup folder, or in none that exists.
    bool isBackupPlace(const std::filesystem::path& file) const;

    // Throws SqlError 1801 (exists) and 1802 (cannot be created).
    void create(std::string_view name);
    // For a database that the caller has detached. Throws SqlError 3701 (missing) and 3708 (of the system).
    void drop(std::string_view name);
    // Likewise. Throws SqlError 1801 (exists) and 5058 (of the system).
    void rename(std::string_view name, std::string_view newName);

    // Counts the sessions that have a database attached, by its databaseKey(). A database in use by others
    // can be neither dropped nor restored.
    int use(const std::string& key, int change) {
        const std::lock_guard guard(m_mutex);
        return m_uses[key] += change;
    }
    // Changes before and after a session changes a catalogue.
    std::uint64_t catalogueVersion() const { return m_catalogueVersion; }
    void noteCatalogueChange() { ++m_catalogueVersion; }
    // Passes the sessions by id.
    template <typename Work>
    auto withSessions(Work work) const {
        const std::lock_guard guard(m_mutex);
        return work(m_sessions);
    }

  private:
    std::filesystem::path m_directory;
    SqliteConnection m_lock;  // sessions share what they know of the catalogues: one server per directory
    std::vector<std::filesystem::path> m_backupFolders;  // without links
    mutable std::mutex m_mutex;
    std::map<std::string, int> m_uses;
    std::atomic<std::uint64_t> m_catalogueVersion = 0;
    mutable std::map<int, SessionEntry> m_sessions;
};

}  // namespace tsql

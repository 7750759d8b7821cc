// The data directory: one SQLite file a database.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tsql {

struct SqliteCloser {
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
};
using SqliteConnection = std::unique_ptr<sqlite3, SqliteCloser>;

// Opens a database file, which OpenMode::Create makes when it is missing: WAL, foreign keys on, a busy
// time-out of 10 s. Throws std::runtime_error with the file and SQLite's text.
enum class OpenMode { Existing, Create };
SqliteConnection openDatabaseFile(const std::filesystem::path& file, OpenMode mode);
// Runs statements that give no rows. Throws std::runtime_error with SQLite's text.
void execute(sqlite3* connection, const std::string& sql);

std::string databaseKey(std::string_view name);  // by which names of databases are compared

// Safe under threads.
class Storage {
  public:
    // Makes the directory (mode 0700) and the system databases when missing. Throws std::runtime_error.
    explicit Storage(const std::filesystem::path& directory);

    // Names as they were created, sorted. Names are looked up in any case.
    std::vector<std::string> databases() const;
    bool exists(std::string_view name) const;
    // The name as it was created; empty when there is none.
    std::string canonicalName(std::string_view name) const;
    // Where the database's file is (or would be).
    std::filesystem::path pathOf(std::string_view name) const;
    const std::filesystem::path& directory() const { return m_directory; }

    // Throws SqlError 1801 (exists) / 1802.
    void create(std::string_view name);
    // Throws SqlError 3701 (does not exist) / 3708 (system database). The caller has closed its connections.
    void drop(std::string_view name);
    // Throws SqlError 1801 / 5058 (system database). The caller has closed its connections.
    void rename(std::string_view name, std::string_view newName);
    static bool isSystemDatabase(std::string_view name);

    // How many sessions have a database attached, by its databaseKey(): one that others use is neither
    // dropped nor restored.
    void use(const std::string& key, int change);
    int uses(const std::string& key) const;

  private:
    std::filesystem::path m_directory;
    mutable std::mutex m_mutex;
    std::map<std::string, int> m_uses;
};

}  // namespace tsql

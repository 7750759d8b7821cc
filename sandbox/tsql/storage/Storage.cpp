#include "storage/Storage.h"

#include <sodium.h>
#include <sys/stat.h>

#include <cctype>

#include "types/Text.h"
#include "types/Values.h"

namespace tsql {
namespace {

namespace fs = std::filesystem;

// In the order of their numbers.
constexpr std::string_view kSystemDatabases[] = {"master", "tempdb", "model", "msdb"};
constexpr std::string_view kExtension = ".db";
constexpr std::size_t kMaxName = 128;

// Encodes a name for a file: letters, digits, - and _ are kept, every other byte becomes %XX.
std::string encodeName(std::string_view name) {
    std::string file;
    for (const char& c : name) {
        const bool isKept = std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-';
        file += isKept ? std::string(1, c) : '%' + hexDigits(std::as_bytes(std::span(&c, 1)));
    }
    return file;
}

std::string decodeName(std::string_view file) {
    std::string name;
    for (; !file.empty(); file.remove_prefix(1)) {
        const auto byte = file[0] == '%' ? parseHex(file.substr(1, 2)) : std::nullopt;
        name += byte && !byte->empty() ? static_cast<char>(byte->front()) : file[0];
        if (byte) file.remove_prefix(byte->size() * 2);
    }
    return name;
}

bool isSystemDatabase(std::string_view name) {
    return std::ranges::any_of(kSystemDatabases, std::bind_front(sameText, name));
}

void removeFiles(const fs::path& file) {
    for (const char* suffix : {"-wal", "-shm", ""}) fs::remove(file.string() + suffix);
}

void checkName(std::string_view name) {
    if (name.empty() || characterCount(name) > kMaxName || encodeName(name).size() > 250)
        throw name.empty() ? sqlError(kMissingColumnName) : sqlError(kNameTooLong, {"database name", name});
}

}  // namespace

SqliteConnection openFile(const fs::path& file, int flags, const std::string& pragmas) {
    sqlite3* raw = nullptr;
    // Without a mutex, since only one thread uses a connection.
    const int code = sqlite3_open_v2(file.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    SqliteConnection connection(raw);
    if (code != SQLITE_OK || sqlite3_exec(raw, pragmas.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw SqliteFailure(raw, "cannot open " + file.string() + ": ");
    return connection;
}

SqliteConnection openDatabaseFile(const fs::path& file, int create) {
    return openFile(file, SQLITE_OPEN_READWRITE | create,
                    "PRAGMA busy_timeout=10000; PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA "
                    "foreign_keys=ON");
}

void execute(sqlite3* connection, const std::string& sql) {
    if (sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw SqliteFailure(connection);
}

std::string databaseKey(std::string_view name) {
    return toLower(name);
}

Storage::Storage(const fs::path& directory, const std::vector<fs::path>& backupFolders)
    : m_directory(fs::absolute(directory)) {
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // its counters would be a lock for all sessions
    if (sodium_init() < 0) throw std::runtime_error("the cryptographic library does not start");
    if (fs::create_directories(m_directory)) ::chmod(m_directory.c_str(), S_IRWXU);
    m_lock = openFile(m_directory / "server.lock", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, "");
    constexpr const char* kLock = "PRAGMA journal_mode = OFF; BEGIN EXCLUSIVE";
    if (sqlite3_exec(m_lock.get(), kLock, nullptr, nullptr, nullptr) == SQLITE_BUSY)
        throw std::runtime_error(m_directory.string() + " is in use by another server");
    for (const std::string_view name : kSystemDatabases)
        if (!exists(name)) create(name);
    m_backupFolders = {fs::canonical(m_directory)};
    for (const fs::path& folder : backupFolders) m_backupFolders.push_back(fs::canonical(folder));
}

bool Storage::isBackupPlace(const fs::path& file) const {
    std::error_code error;
    const fs::path folder = fs::canonical(fs::absolute(file).parent_path(), error);
    return error || std::ranges::any_of(m_backupFolders, [&](const fs::path& each) {
               return std::ranges::mismatch(each, folder).in1 == each.end();
           });
}

std::vector<std::string> Storage::databases() const {
    const std::lock_guard lock(m_mutex);
    std::vector<std::string> names;
    // Only database files end in the extension: SQLite's side files have names such as x.db-wal.
    for (const auto& entry : fs::directory_iterator(m_directory))
        if (entry.path().extension() == kExtension) names.push_back(decodeName(entry.path().stem().string()));
    std::ranges::sort(names, {}, [](const std::string& name) {
        return std::pair(std::ranges::find(kSystemDatabases, name), name);
    });
    return names;
}

std::string Storage::canonicalName(std::string_view name) const {
    for (std::string& known : databases())
        if (sameText(known, name)) return std::move(known);
    return {};
}

fs::path Storage::pathOf(std::string_view name) const {
    const std::string known = canonicalName(name);
    return m_directory / (encodeName(known.empty() ? name : known) + std::string(kExtension));
}

void Storage::create(std::string_view name) {
    checkName(name);
    if (exists(name)) throw sqlError(kDatabaseExists, {name});
    const fs::path file = pathOf(name);
    try {
        openDatabaseFile(file, SQLITE_OPEN_CREATE);
    } catch (const SqliteFailure& error) {
        removeFiles(file);
        throw sqlError(kDatabaseNotCreated, {error.what()});
    }
}

void Storage::drop(std::string_view name) {
    if (isSystemDatabase(name)) throw sqlError(kCannotDropSystemDatabase, {name});
    if (!exists(name)) throw sqlError(kCannotDropMissing, {"database", name}, 1);
    removeFiles(pathOf(name));
}

void Storage::rename(std::string_view name, std::string_view newName) {
    if (isSystemDatabase(name)) throw sqlError(kOptionCannotBeSet, {"MODIFY NAME", name});
    checkName(newName);
    if (exists(newName) && !sameText(name, newName)) throw sqlError(kDatabaseExists, {newName});
    const fs::path before = pathOf(name);
    openDatabaseFile(before);  // closing the last connection deletes the journal
    fs::rename(before, m_directory / (encodeName(newName) + std::string(kExtension)));
}

}  // namespace tsql

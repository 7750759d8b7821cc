#include "Storage.h"

#include <sodium.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <semaphore>

#include "Messages.h"
#include "Text.h"
#include "Values.h"

namespace tsql {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 4> kSystemDatabases = {"master", "model", "msdb", "tempdb"};
constexpr std::string_view kExtension = ".db";
constexpr std::size_t kMaxName = 128;
constexpr int kBusyMilliseconds = 10'000;
// A login costs some milliseconds; the server is for local use.
constexpr unsigned long long kHashOperations = 3;
constexpr std::size_t kHashMemory = 4u << 20;

// Letters, digits, - and _ stand for themselves; every other byte is %XX.
std::string encodeName(std::string_view name) {
    std::string file;
    for (const char& c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-')
            file += c;
        else
            file += '%' + hexDigits(std::as_bytes(std::span(&c, 1)));
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

// The names of SQLite's side files begin with the database's: only whole names end in the extension.
std::vector<std::string> namesIn(const fs::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        if (entry.path().extension() == kExtension) names.push_back(decodeName(entry.path().stem().string()));
    std::sort(names.begin(), names.end());
    return names;
}

void checkName(std::string_view name) {
    if (name.empty() || characterCount(name) > kMaxName || encodeName(name).size() > 250)
        throw sqlError(103, {name});
}

struct Statement {
    Statement(sqlite3* connection, const std::string& sql) {
        if (sqlite3_prepare_v2(connection, sql.c_str(), -1, &handle, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection));
    }
    ~Statement() { sqlite3_finalize(handle); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void bind(int index, std::string_view text) {
        sqlite3_bind_text64(handle, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }
    bool step() {
        const int code = sqlite3_step(handle);
        if (code != SQLITE_ROW && code != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errmsg(sqlite3_db_handle(handle)));
        return code == SQLITE_ROW;
    }

    sqlite3_stmt* handle = nullptr;
};

std::string hashOf(std::string_view password) {
    std::array<char, crypto_pwhash_STRBYTES> hash{};
    if (crypto_pwhash_str(hash.data(), password.data(), password.size(), kHashOperations, kHashMemory) != 0)
        throw std::runtime_error("no memory to hash a password");
    return hash.data();
}

// What an unknown name's password is compared with.
const std::string& nobodysHash() {
    static const std::string hash = hashOf("");
    return hash;
}

}  // namespace

SqliteConnection openDatabaseFile(const fs::path& file, bool create) {
    sqlite3* raw = nullptr;
    // Without a lock of its own: each connection is one session's.
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (create ? SQLITE_OPEN_CREATE : 0);
    const int code = sqlite3_open_v2(file.c_str(), &raw, flags, nullptr);
    SqliteConnection connection(raw);
    if (code != SQLITE_OK)
        throw std::runtime_error("cannot open " + file.string() + ": " + sqlite3_errstr(code));
    sqlite3_busy_timeout(raw, kBusyMilliseconds);
    try {
        execute(raw, "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON");
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("cannot open " + file.string() + ": " + error.what());
    }
    return connection;
}

void execute(sqlite3* connection, const std::string& sql) {
    if (sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(connection));
}

Storage::Storage(fs::path directory) : m_directory(std::move(directory)) {
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // its counters are one lock for all sessions
    if (sodium_init() < 0) throw std::runtime_error("the cryptographic library does not start");
    if (fs::create_directories(m_directory)) ::chmod(m_directory.c_str(), S_IRWXU);
    for (const std::string_view name : kSystemDatabases)
        if (!exists(name)) create(name);
    const auto master = openDatabaseFile(pathOf("master"), false);
    execute(master.get(), "CREATE TABLE IF NOT EXISTS " + std::string(kLoginTable) +
                              "(name TEXT PRIMARY KEY, hash TEXT NOT NULL)");
}

std::vector<std::string> Storage::databases() const {
    const std::lock_guard lock(m_mutex);
    return namesIn(m_directory);
}

std::string Storage::canonicalName(std::string_view name) const {
    for (std::string& known : databases())
        if (compareText(known, name) == 0) return std::move(known);
    return {};
}

bool Storage::exists(std::string_view name) const {
    return !canonicalName(name).empty();
}

fs::path Storage::pathOf(std::string_view name) const {
    const std::string known = canonicalName(name);
    return m_directory / (encodeName(known.empty() ? name : known) + std::string(kExtension));
}

void Storage::create(std::string_view name) {
    checkName(name);
    if (exists(name)) throw sqlError(1801, {name});
    try {
        openDatabaseFile(pathOf(name), true);
    } catch (const std::runtime_error& error) {
        throw sqlError(1802, {error.what()});
    }
}

void Storage::drop(std::string_view name) {
    if (isSystemDatabase(name)) throw sqlError(3708, {name});
    if (!exists(name)) throw sqlError(3701, {"database", name}, 1);
    const std::string file = pathOf(name).string();
    for (const char* suffix : {"-wal", "-shm", ""}) fs::remove(file + suffix);
}

bool Storage::isSystemDatabase(std::string_view name) {
    return std::any_of(kSystemDatabases.begin(), kSystemDatabases.end(),
                       [&](std::string_view system) { return compareText(system, name) == 0; });
}

void Storage::setLogin(std::string_view name, std::string_view password) {
    const auto master = openDatabaseFile(pathOf("master"), false);
    Statement statement(master.get(), "INSERT INTO " + std::string(kLoginTable) +
                                          " VALUES(?1, ?2) ON CONFLICT(name) DO UPDATE SET hash = ?2");
    statement.bind(1, toLower(name));
    statement.bind(2, hashOf(password));
    statement.step();
}

bool Storage::checkLogin(std::string_view name, std::string_view password) const {
    const auto master = openDatabaseFile(pathOf("master"), false);
    Statement statement(master.get(), "SELECT hash FROM " + std::string(kLoginTable) + " WHERE name = ?1");
    statement.bind(1, toLower(name));
    const bool known = statement.step();
    const std::string hash =
        known ? reinterpret_cast<const char*>(sqlite3_column_text(statement.handle, 0)) : nobodysHash();
    // Each takes its share of memory and of a processor: in a flood of logins the others wait for their turn.
    static std::counting_semaphore<> turns(2);
    turns.acquire();
    const bool same = crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
    turns.release();
    return same && known;
}

}  // namespace tsql

#include "storage/Connection.h"

#include <unistd.h>

#include <boost/algorithm/string/replace.hpp>
#include <cstring>
#include <thread>

#include "types/Finally.h"
#include "types/Text.h"

namespace tsql {
namespace {

constexpr std::chrono::seconds kUsualLockTimeout{10};
constexpr std::chrono::milliseconds kLongestPause{25};  // between two attempts to get a lock
constexpr int kStepsBetweenLooks = 2'000;  // SQLite instructions between two checks for cancellation
constexpr std::size_t kIdleStatements = 64, kLongestIdle = 32'768;  // bytes
constexpr std::size_t kMostAttached = 10;                           // limit of SQLite
// Bit of SQLite's Bloom filters among its optimizations. A filter hashes the bytes of a string, so that a
// join loses the rows whose keys are equal only under the collation.
constexpr unsigned kBloomFilters = 0x80000;
constexpr std::byte kNoBytes{};  // SQLite has no address for an empty blob; copies need one

}  // namespace

std::string quotedName(std::string_view name) {
    return '"' + boost::replace_all_copy(std::string(name), "\"", "\"\"") + '"';
}

std::string quotedNames(const std::vector<std::string>& names, std::string_view prefix) {
    return commaList(names, [&](const auto& name) { return std::string(prefix) + quotedName(name); });
}

std::string quotedText(std::string_view text) {
    return "'" + boost::replace_all_copy(std::string(text), "'", "''") + "'";
}

PreparedStatement::PreparedStatement(Connection& connection, std::string_view sql)
    : m_connection(connection), m_entry(connection.borrow(sql)), m_statement(m_entry.front().second) {}

PreparedStatement::PreparedStatement(Connection& connection, std::string_view sql,
                                     std::span<const Value> values,
                                     const std::optional<std::uint64_t>& version)
    : PreparedStatement(connection, sql) {
    m_hasVersion = version.has_value();
    if (m_hasVersion && *version != connection.m_storage.catalogueVersion())
        throw SqliteFailure(SQLITE_AUTH, "");
    const int asked = sqlite3_bind_parameter_count(m_statement);  // the last values may be unused
    for (int index = 1; index <= asked && index <= static_cast<int>(values.size()); ++index)
        bind(index, viewOf(values[static_cast<std::size_t>(index) - 1]));
}

PreparedStatement::~PreparedStatement() {
    m_connection.giveBack(m_entry);
}

void PreparedStatement::bind(int index, const CellView& value) {
    int code = SQLITE_OK;  // also for NULL, which an unbound parameter is
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        code = sqlite3_bind_int64(m_statement, index, *integer);
    if (const auto* real = std::get_if<double>(&value)) code = sqlite3_bind_double(m_statement, index, *real);
    if (const auto* text = std::get_if<std::string_view>(&value))
        code = sqlite3_bind_text64(m_statement, index, text->data() ? text->data() : "", text->size(),
                                   SQLITE_STATIC, SQLITE_UTF8);
    if (const auto* bytes = std::get_if<Blob>(&value))
        code = sqlite3_bind_blob64(m_statement, index, bytes->empty() ? &kNoBytes : bytes->data(),
                                   bytes->size(), SQLITE_STATIC);
    if (code != SQLITE_OK) throw SqliteFailure(code, sqlite3_errstr(code));
}

bool PreparedStatement::step() {
    const Temporarily compiles(m_connection.m_compiles, !m_hasVersion);
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    throw SqliteFailure(m_connection.handle());
}

std::string PreparedStatement::text(int column) const {
    const CellView view = cell(column);
    const auto* text = std::get_if<std::string_view>(&view);
    return text ? std::string(*text) : std::string();
}

Connection::Connection(Storage& storage, std::function<bool()> cancelled, std::function<void()> noteWait)
    : m_storage(storage),
      m_cancelled(std::move(cancelled)),
      m_noteWait(std::move(noteWait)),
      m_handle(openDatabaseFile(":memory:", SQLITE_OPEN_CREATE)) {
    setLockTimeout(kUsualLockTimeout);
    sqlite3_busy_handler(handle(), waitForLock, this);
    sqlite3_progress_handler(handle(), kStepsBetweenLooks, isCancelled, this);
    sqlite3_extended_result_codes(handle(), 1);
    sqlite3_set_authorizer(handle(), mayCompile, this);
    sqlite3_test_control(SQLITE_TESTCTRL_OPTIMIZATIONS, handle(), kBloomFilters);  // the others stay on
    // A value that is bound never makes SQLite compile the statement again.
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_ENABLE_QPSG, 1, nullptr);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);  // "x" is a name, never a string
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
}

Connection::~Connection() {
    dropStatements();
    for (const auto& key : m_attached) m_storage.use(key, -1);
}

void Connection::setLockTimeout(std::chrono::milliseconds timeout) {
    m_lockTimeout = timeout.count() < 0 ? kUsualLockTimeout : timeout;
}

// SQLite's busy handler. Returns false to give up. `tries` is the number of earlier calls for the same lock.
int Connection::waitForLock(void* self, int tries) {
    auto& connection = *static_cast<Connection*>(self);
    const auto now = std::chrono::steady_clock::now();
    if (tries == 0) connection.m_waitEnds = now + connection.m_lockTimeout;
    connection.m_noteWait();
    if (now >= connection.m_waitEnds || connection.m_cancelled()) return false;
    std::this_thread::sleep_for(std::min(std::chrono::milliseconds(tries + 1), kLongestPause));
    return true;
}

void Connection::dropStatements() {
    for (const auto& [sql, statement] : m_idle) sqlite3_finalize(statement);
    m_idle.clear();
}

std::string Connection::attach(std::string_view database) {
    const std::string key = databaseKey(database);
    const auto found = std::ranges::find(m_attached, key);
    if (found != m_attached.end()) {
        m_attached.splice(m_attached.begin(), m_attached, found);
        return quotedName(key);
    }
    if (!m_storage.exists(database)) throw sqlError(kUnknownDatabase, {database});
    if (m_attached.size() >= kMostAttached && !inTransaction()) detach(m_attached.back());
    const std::string file = m_storage.pathOf(database).string();
    try {
        run("ATTACH " + quotedText(file) + " AS " + quotedName(key));
    } catch (const SqliteFailure& failure) {
        const int code = failure.code & 0xFF;
        const bool isOther = code == SQLITE_NOTADB;  // a file of another kind
        if (code != SQLITE_CANTOPEN && code != SQLITE_IOERR && code != SQLITE_READONLY && !isOther) throw;
        int system =
            isOther ? 0 : sqlite3_system_errno(handle());  // of its last call, perhaps for another file
        for (const auto& path : {m_storage.pathOf(database), m_storage.pathOf(database).parent_path()})
            if (!isOther && ::euidaccess(path.c_str(), R_OK | W_OK) != 0) system = errno;
        const char* const why = isOther ? failure.what() : std::strerror(system);
        throw sqlError(kFileNotOpened, {file, std::to_string(system), why});
    }
    run("PRAGMA " + quotedName(key) + ".cache_size = -512");  // KiB; idle sessions keep their pages
    m_attached.push_front(key);
    m_storage.use(key, 1);
    return quotedName(key);
}

void Connection::lock(std::string_view database) {
    const std::string key = databaseKey(database);
    if (sqlite3_txn_state(handle(), key.c_str()) > SQLITE_TXN_NONE) return;
    const std::string schema = attach(database);
    const int found = sqlite3_table_column_metadata(handle(), key.c_str(), "tsqlbox_objects", nullptr,
                                                    nullptr, nullptr, nullptr, nullptr, nullptr);
    if (found == SQLITE_OK) run("DELETE FROM " + schema + ".tsqlbox_objects WHERE 0");
}

void Connection::detach(std::string_view database) {
    const std::string key = databaseKey(database);
    const auto found = std::ranges::find(m_attached, key);
    if (found == m_attached.end()) return;
    dropStatements();
    execute(handle(), "DETACH " + quotedName(key));
    m_attached.erase(found);
    ++m_detaches;
    m_catalogues.erase(quotedName(key));
    m_storage.use(key, -1);
}

void Connection::run(const std::string& sql, const std::vector<Value>& values) {
    PreparedStatement statement(*this, sql, values);
    while (statement.step()) continue;
}

std::optional<std::int64_t> Connection::number(const std::string& sql, const std::vector<Value>& values) {
    PreparedStatement statement(*this, sql, values);
    return statement.step() ? std::optional(statement.integer(0)) : std::nullopt;
}

// A statement in use, as in a recursive function, is not in the cache of idle ones and is prepared again.
SqlStatements Connection::borrow(std::string_view sql) {
    SqlStatements entry;
    const auto found = std::ranges::find_if(m_idle, [&](const auto& idle) { return idle.first == sql; });
    if (found != m_idle.end()) {
        entry.splice(entry.begin(), m_idle, found);
        if (!sqlite3_expired(entry.front().second)) return entry;
        sqlite3_finalize(std::exchange(entry.front().second, nullptr));
    } else {
        entry.emplace_front(sql, nullptr);
    }
    const Temporarily compiles(m_compiles, true);
    const int code = sqlite3_prepare_v3(handle(), sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &entry.front().second, nullptr);
    if (code != SQLITE_OK) throw SqliteFailure(handle());
    return entry;
}

void Connection::giveBack(SqlStatements& entry) {
    const auto& [sql, statement] = entry.front();
    if (sqlite3_reset(statement) == SQLITE_AUTH || sql.size() > kLongestIdle)
        return static_cast<void>(sqlite3_finalize(statement));
    sqlite3_clear_bindings(statement);
    m_idle.splice(m_idle.begin(), entry);
    if (m_idle.size() <= kIdleStatements) return;
    sqlite3_finalize(m_idle.back().second);
    m_idle.pop_back();
}

CellView viewOf(sqlite3_value* value) {
    const int type = sqlite3_value_type(value);
    if (type == SQLITE_NULL) return Null{};
    if (type == SQLITE_INTEGER) return std::int64_t{sqlite3_value_int64(value)};
    if (type == SQLITE_FLOAT) return sqlite3_value_double(value);
    const bool ofText = type == SQLITE_TEXT;
    const void* start = ofText ? sqlite3_value_text(value) : sqlite3_value_blob(value);
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));  // behind the call above
    if (ofText) return std::string_view(static_cast<const char*>(start), size);
    return Blob(start ? static_cast<const std::byte*>(start) : &kNoBytes, size);
}

void giveResult(sqlite3_context* call, const Value& value) {
    if (isNull(value)) return sqlite3_result_null(call);
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return sqlite3_result_int64(call, *integer);
    if (const auto* real = std::get_if<double>(&value)) return sqlite3_result_double(call, *real);
    if (const auto* text = std::get_if<std::string>(&value))
        return sqlite3_result_text64(call, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    const auto& bytes = std::get<Bytes>(value);
    sqlite3_result_blob64(call, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

}  // namespace tsql

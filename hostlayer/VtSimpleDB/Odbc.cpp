#include "Odbc.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "EvDebug.h"
#include "ServerRequest.h"
#include "Utf16.h"
#include "VtCauses.h"

namespace hostlayer {
namespace {

constexpr SQLSMALLINT kMaxRecords = 1000;         // a batch may print any number of lines
constexpr std::size_t kUsualMessageLength = 512;  // UTF-16 units
// UTF-16 units that fit beside the NUL into a buffer whose size ODBC counts in 16 bits.
constexpr std::size_t kLongestMessage = std::numeric_limits<SQLSMALLINT>::max() - 1;

// Fields that drivers for SQL Server add to a record. FreeTDS has kLine and kState, and returns the severity
// as kState.
enum DriverField : SQLSMALLINT {
    kState = -1150,
    kSeverity = -1151,
    kServer = -1152,
    kProcedure = -1153,
    kLine = -1154
};
constexpr int kDriverLine = 65535;                // FreeTDS's line number for messages of its own
constexpr std::string_view kWarningClass = "01";  // first two characters of the SQLSTATE
constexpr std::string_view kConnectionClass = "08";

struct Record {
    std::string sqlState;
    int number = 0;
    std::string message;

    bool isError() const { return !sqlState.starts_with(kWarningClass); }
    // "SQLSTATE (native number) message"
    std::string text() const { return sqlState + " (" + std::to_string(number) + ") " + message; }
};

// False when there is no such record.
bool readRecord(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number, Record& record) {
    std::u16string state(SQL_SQLSTATE_SIZE, u'\0');
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    std::u16string message(kUsualMessageLength, u'\0');
    const auto read = [&] {
        return ::SQLGetDiagRecW(type, handle, number, odbcText(state), &native, odbcText(message),
                                static_cast<SQLSMALLINT>(message.size()), &length);
    };
    // A message that is longer has a negative length.
    const auto lengthThatFits = [&length] {
        return length < 0 ? kLongestMessage : std::min(static_cast<std::size_t>(length), kLongestMessage);
    };
    SQLRETURN result = read();
    if (SQL_SUCCEEDED(result) && lengthThatFits() >= message.size()) {
        message.resize(lengthThatFits() + 1);
        result = read();
    }
    if (!SQL_SUCCEEDED(result)) return false;
    message.resize(lengthThatFits());
    record = {toUtf8(state), static_cast<int>(native), toUtf8(message)};
    return true;
}

// Further fields of a record; 0 or empty if the driver does not have the field.
class RecordFields {
  public:
    RecordFields(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number)
        : m_type(type), m_handle(handle), m_number(number) {}

    // Tries both lengths: FreeTDS rejects SQL_IS_INTEGER, other drivers may require it.
    int integer(SQLSMALLINT field) const {
        for (const SQLSMALLINT length : {SQLSMALLINT{SQL_IS_INTEGER}, SQLSMALLINT{0}}) {
            SQLINTEGER value = 0;
            if (SQL_SUCCEEDED(::SQLGetDiagFieldW(m_type, m_handle, m_number, field, &value, length, nullptr)))
                return static_cast<int>(value);
        }
        return 0;
    }

    std::string text(SQLSMALLINT field) const {
        std::u16string buffer(kUsualMessageLength, u'\0');
        SQLSMALLINT bytes = 0;
        const auto size = static_cast<SQLSMALLINT>(buffer.size() * sizeof(char16_t));
        const SQLRETURN result =
            ::SQLGetDiagFieldW(m_type, m_handle, m_number, field, buffer.data(), size, &bytes);
        buffer.resize(SQL_SUCCEEDED(result) ? std::min(buffer.find(u'\0'), buffer.size()) : 0);
        return toUtf8(buffer);
    }

  private:
    SQLSMALLINT m_type;
    SQLHANDLE m_handle;
    SQLSMALLINT m_number;
};

void noteRecord(SQLSMALLINT type, const Record& record, const RecordFields& fields) {
    const bool lostConnection = record.sqlState.starts_with(kConnectionClass);
    const bool isStatement = type == SQL_HANDLE_STMT && !lostConnection;
    VtCause cause{.place = isStatement ? VtCause::kStatement : VtCause::kConnection,
                  .sqlState = record.sqlState,
                  .serverError = record.number,
                  .text = record.message};
    cause.line = fields.integer(kLine);
    if (cause.line == kDriverLine) cause.line = 0;
    cause.state = fields.integer(kState);
    cause.severity = fields.integer(kSeverity);
    if (cause.severity == 0) std::swap(cause.severity, cause.state);  // FreeTDS
    cause.procedure = fields.text(kProcedure);
    cause.server = fields.text(kServer);
    if (cause.server.empty()) cause.server = fields.text(SQL_DIAG_SERVER_NAME);
    VtNoteCause(cause);
}

void logDiagnostics(SQLSMALLINT type, SQLHANDLE handle, int level, const char* action) {
    const EvDebug log;
    Record record;
    SQLSMALLINT number = 1;
    const bool isCut =
        level == kErrorDebugLevel && ServerRequest::noteCut(action);  // the driver does not know why
    bool isNoted = level != kErrorDebugLevel || isCut;
    for (; number <= kMaxRecords && readRecord(type, handle, number, record); ++number) {
        log.DebugLevel(level, "%s: %s", action, record.text().c_str());
        if (level != kErrorDebugLevel || isCut || !record.isError()) continue;
        noteRecord(type, record, {type, handle, number});
        isNoted = true;
    }
    const bool hasRecords = number > 1;
    // The driver manager reports a driver that it cannot load with the state of a warning.
    if (!isNoted && readRecord(type, handle, 1, record)) noteRecord(type, record, {type, handle, 1});
    if (!hasRecords && !isCut && level == kErrorDebugLevel)
        log.DebugLevel(level, "%s failed without a diagnostic", action);
}

}  // namespace

OdbcHandle::OdbcHandle(SQLSMALLINT type, SQLHANDLE parent) : m_type(type) {
    if (!SQL_SUCCEEDED(::SQLAllocHandle(type, parent, &m_handle))) m_handle = nullptr;
}

// Serialised: unixODBC stores the paths of its configuration in unprotected static variables meanwhile.
OdbcHandle OdbcHandle::environment() {
    static std::mutex guard;
    const std::lock_guard lock(guard);
    return {SQL_HANDLE_ENV, nullptr};
}

OdbcHandle::~OdbcHandle() {
    if (m_handle != nullptr) ::SQLFreeHandle(m_type, m_handle);
}

bool OdbcHandle::check(SQLRETURN result, const char* action) const {
    if (result == SQL_SUCCESS || result == SQL_NO_DATA) return true;
    logDiagnostics(m_type, m_handle, result == SQL_SUCCESS_WITH_INFO ? kTraceDebugLevel : kErrorDebugLevel,
                   action);
    return result == SQL_SUCCESS_WITH_INFO;
}

void OdbcHandle::reportFailure(const char* action) const {
    logDiagnostics(m_type, m_handle, kErrorDebugLevel, action);
}

bool OdbcHandle::hasErrorRecord() const {
    Record record;
    for (SQLSMALLINT number = 1; number <= kMaxRecords; ++number) {
        if (!readRecord(m_type, m_handle, number, record)) return false;
        if (record.isError()) return true;
    }
    return false;
}

bool OdbcHandle::hasServerMessage() const {
    constexpr int kFirstOfFreeTds = 20000, kLastOfFreeTds = 20999;  // DB-Library's numbers
    Record record;
    for (SQLSMALLINT number = 1; number <= kMaxRecords; ++number) {
        if (!readRecord(m_type, m_handle, number, record)) return false;
        const bool isDrivers = record.number >= kFirstOfFreeTds && record.number <= kLastOfFreeTds;
        if (record.number != 0 && !isDrivers) return true;
    }
    return false;
}

}  // namespace hostlayer

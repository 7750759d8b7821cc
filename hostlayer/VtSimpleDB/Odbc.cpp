#include "Odbc.h"

#include <mutex>
#include <string>
#include <string_view>

#include "EvDebug.h"
#include "Utf16.h"

namespace hostlayer {
namespace {

constexpr int kErrorLevel = 1;
constexpr int kTraceLevel = 3;
constexpr SQLSMALLINT kMaxRecords = 1000;         // a batch may print any number of lines
constexpr std::size_t kUsualMessageLength = 512;  // UTF-16 units

// Reads one diagnostic record as "SQLSTATE (native number) message". False when there is no such record.
bool diagnosticText(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number, std::string& text) {
    std::u16string state(SQL_SQLSTATE_SIZE, u'\0');
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    std::u16string message(kUsualMessageLength, u'\0');
    const auto read = [&] {
        return ::SQLGetDiagRecW(type, handle, number, odbcText(state), &native, odbcText(message),
                                static_cast<SQLSMALLINT>(message.size()), &length);
    };
    SQLRETURN result = read();
    if (SQL_SUCCEEDED(result) && static_cast<std::size_t>(length) >= message.size()) {
        message.resize(static_cast<std::size_t>(length) + 1);
        result = read();
    }
    if (!SQL_SUCCEEDED(result)) return false;
    message.resize(static_cast<std::size_t>(length));
    text = toUtf8(state) + " (" + std::to_string(native) + ") " + toUtf8(message);
    return true;
}

void logDiagnostics(SQLSMALLINT type, SQLHANDLE handle, int level, const char* action) {
    const EvDebug log;
    if (!log.IsInitialized()) return;
    std::string text;
    SQLSMALLINT number = 1;
    for (; number <= kMaxRecords && diagnosticText(type, handle, number, text); ++number)
        log.DebugLevel(level, "%s: %s", action, text.c_str());
    const bool hasRecords = number > 1;
    if (!hasRecords && level == kErrorLevel) log.DebugLevel(level, "%s failed without a diagnostic", action);
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
    logDiagnostics(m_type, m_handle, result == SQL_SUCCESS_WITH_INFO ? kTraceLevel : kErrorLevel, action);
    return result == SQL_SUCCESS_WITH_INFO;
}

bool OdbcHandle::hasErrorRecord() const {
    constexpr std::string_view kWarningClass = "01";  // first two characters of the SQLSTATE
    std::string text;
    for (SQLSMALLINT number = 1; number <= kMaxRecords; ++number) {
        if (!diagnosticText(m_type, m_handle, number, text)) return false;
        if (!text.starts_with(kWarningClass)) return true;
    }
    return false;
}

}  // namespace hostlayer

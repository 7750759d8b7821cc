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
constexpr SQLSMALLINT kMaxRecords = 1000;  // a batch may print without end

// One record's text, of whatever length; false when there is no such record.
bool diagnosticText(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number, std::string& text) {
    std::u16string state(SQL_SQLSTATE_SIZE, u'\0');
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    std::u16string message(512, u'\0');
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
    if (number == 1 && level == kErrorLevel) log.DebugLevel(level, "%s failed without a reason", action);
}

}  // namespace

OdbcHandle::OdbcHandle(SQLSMALLINT type, SQLHANDLE parent) : m_type(type) {
    if (!SQL_SUCCEEDED(::SQLAllocHandle(type, parent, &m_handle))) m_handle = nullptr;
}

// One at a time: unixODBC notes the paths of its configuration then, in variables that it does not guard.
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

bool OdbcHandle::leftError() const {
    constexpr std::string_view kWarning = "01";  // the class of SQLSTATE
    std::string text;
    for (SQLSMALLINT number = 1; number <= kMaxRecords; ++number) {
        if (!diagnosticText(m_type, m_handle, number, text)) return false;
        if (!text.starts_with(kWarning)) return true;
    }
    return false;
}

}  // namespace hostlayer

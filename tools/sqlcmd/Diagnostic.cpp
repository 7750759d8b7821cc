#include "Diagnostic.h"

#include <optional>
#include <string_view>

namespace sqlcmd {
namespace {

// Fields that Microsoft's driver adds to a record. FreeTDS offers two of them: the line, and in the place of
// the state it gives the severity. The state itself it keeps to itself, and the procedure's name too.
enum DriverField : SQLSMALLINT {
    kState = -1150,
    kSeverity = -1151,
    kServer = -1152,
    kProcedure = -1153,
    kLine = -1154
};

constexpr std::string_view kInformation = "01000";  // the SQLSTATE of PRINT and the like
constexpr int kOwnLine = 65535;                     // FreeTDS marks so what it says itself
constexpr int kErrorSeverity = 16;                  // of a driver's own error
constexpr int kDisconnectSeverity = 20;
constexpr SQLSMALLINT kMaxText = 32766;  // bytes that one record can hold

class Record {
  public:
    Record(const DriverFunctions& functions, SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number)
        : m_functions(functions), m_type(type), m_handle(handle), m_number(number) {}

    bool readTo(Diagnostic& diagnostic) const {
        SQLCHAR state[6] = {};
        SQLINTEGER number = 0;
        SQLSMALLINT length = 0;
        std::string text(kMaxText, '\0');
        const SQLRETURN code =
            m_functions.getDiagRec(m_type, m_handle, m_number, state, &number,
                                   reinterpret_cast<SQLCHAR*>(text.data()), kMaxText, &length);
        if (!SQL_SUCCEEDED(code)) return false;
        text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
        diagnostic.sqlState = reinterpret_cast<const char*>(state);
        diagnostic.number = number;
        diagnostic.text = std::move(text);
        return true;
    }

    // FreeTDS refuses the length that means "an integer", other drivers may want it.
    std::optional<int> integer(DriverField field) const {
        for (const SQLSMALLINT length : {SQLSMALLINT{SQL_IS_INTEGER}, SQLSMALLINT{0}}) {
            SQLINTEGER value = 0;
            if (SQL_SUCCEEDED(
                    m_functions.getDiagField(m_type, m_handle, m_number, field, &value, length, nullptr)))
                return value;
        }
        return std::nullopt;
    }

    std::string text(SQLSMALLINT field) const {
        char buffer[512] = {};
        SQLSMALLINT length = 0;
        const SQLRETURN code =
            m_functions.getDiagField(m_type, m_handle, m_number, field, buffer, sizeof buffer - 1, &length);
        return SQL_SUCCEEDED(code) ? buffer : "";
    }

  private:
    const DriverFunctions& m_functions;
    SQLSMALLINT m_type;
    SQLHANDLE m_handle;
    SQLSMALLINT m_number;
};

// "[Microsoft][ODBC Driver 17 for SQL Server][SQL Server]text": the names before the server's make the
// driver.
void splitNames(Diagnostic& diagnostic) {
    std::string_view text = diagnostic.text;
    while (text.starts_with('[')) {
        const auto end = text.find(']');
        if (end == std::string_view::npos) break;
        const std::string_view name = text.substr(1, end - 1);
        text.remove_prefix(end + 1);
        if (name == "SQL Server") break;
        if (!diagnostic.driver.empty()) diagnostic.driver += ' ';
        diagnostic.driver += name;
    }
    diagnostic.text.erase(0, diagnostic.text.size() - text.size());
}

bool startsWithAny(std::string_view text, std::initializer_list<std::string_view> beginnings) {
    for (const std::string_view beginning : beginnings)
        if (text.starts_with(beginning)) return true;
    return false;
}

// A server's message has a line. Where a driver gives none, the SQLSTATE tells.
bool comesFromServer(const Diagnostic& diagnostic) {
    if (diagnostic.line != 0) return diagnostic.line != kOwnLine;
    if (diagnostic.sqlState == kInformation) return true;
    return diagnostic.number > 0 && !startsWithAny(diagnostic.sqlState, {"01", "08", "HY", "IM"});
}

// A driver's own warnings, of a value that was cut for one, are no messages.
int severityOfDriver(const Diagnostic& diagnostic) {
    if (diagnostic.sqlState.starts_with("08")) return kDisconnectSeverity;
    return diagnostic.line != kOwnLine && diagnostic.sqlState.starts_with("01") ? 0 : kErrorSeverity;
}

void complete(Diagnostic& diagnostic, const Record& record) {
    splitNames(diagnostic);
    diagnostic.line = record.integer(kLine).value_or(0);
    diagnostic.fromServer = comesFromServer(diagnostic);
    if (!diagnostic.fromServer) {
        diagnostic.severity = severityOfDriver(diagnostic);
        return;
    }
    const auto severity = record.integer(kSeverity);
    const auto state = record.integer(kState);
    diagnostic.severity =
        severity ? *severity : state.value_or(diagnostic.sqlState == kInformation ? 0 : kErrorSeverity);
    if (severity) diagnostic.state = state.value_or(1);
    diagnostic.procedure = record.text(kProcedure);
    diagnostic.server = record.text(kServer);
    if (diagnostic.server.empty()) diagnostic.server = record.text(SQL_DIAG_SERVER_NAME);
}

}  // namespace

std::vector<Diagnostic> diagnosticsOf(const DriverFunctions& functions, SQLSMALLINT handleType,
                                      SQLHANDLE handle) {
    std::vector<Diagnostic> result;
    for (SQLSMALLINT number = 1;; ++number) {
        const Record record(functions, handleType, handle, number);
        Diagnostic diagnostic;
        if (!record.readTo(diagnostic)) return result;
        complete(diagnostic, record);
        result.push_back(std::move(diagnostic));
    }
}

}  // namespace sqlcmd

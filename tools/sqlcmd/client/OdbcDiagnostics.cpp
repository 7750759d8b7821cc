#include "client/OdbcDiagnostics.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace sqlcmd {
namespace {

// Fields that Microsoft's driver adds to a record. FreeTDS has two of them, kLine and kState, and returns the
// severity as kState.
enum DriverField : SQLSMALLINT {
    kState = -1150,
    kSeverity = -1151,
    kServer = -1152,
    kProcedure = -1153,
    kLine = -1154
};

constexpr std::string_view kInformation = "01000";  // SQLSTATE of PRINT and other messages of the server
constexpr int kDriverLine = 65535;                  // FreeTDS's line number for messages of its own
constexpr int kDriverErrorSeverity = 16;
constexpr int kDisconnectSeverity = 20;
constexpr SQLSMALLINT kMaxText = 32766;  // bytes that a record can hold

class Record {
  public:
    Record(const DriverFunctions& functions, SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT number)
        : m_functions(functions), m_type(type), m_handle(handle), m_number(number) {}

    // Reads field by field: when a whole record is read, drivers sort the most severe one to the front, and
    // the order of PRINT messages and errors is lost. False when there is no such record.
    bool readTo(Diagnostic& diagnostic) const {
        diagnostic.sqlState = text(SQL_DIAG_SQLSTATE);
        diagnostic.text = text(SQL_DIAG_MESSAGE_TEXT);
        diagnostic.number = integer(SQL_DIAG_NATIVE).value_or(0);
        return !diagnostic.sqlState.empty();
    }

    std::string wholeText() const {
        std::string buffer(kMaxText + 1, '\0');
        SQLCHAR state[6] = {};
        SQLINTEGER number = 0;
        SQLSMALLINT length = 0;
        m_functions.getDiagRec(m_type, m_handle, m_number, state, &number,
                               reinterpret_cast<SQLCHAR*>(buffer.data()), kMaxText, &length);
        buffer.resize(buffer.find('\0'));
        return buffer;
    }

    // Tries both lengths: FreeTDS rejects SQL_IS_INTEGER, other drivers may require it.
    std::optional<int> integer(SQLSMALLINT field) const {
        for (const SQLSMALLINT length : {SQLSMALLINT{SQL_IS_INTEGER}, SQLSMALLINT{0}}) {
            SQLINTEGER value = 0;
            if (SQL_SUCCEEDED(
                    m_functions.getDiagField(m_type, m_handle, m_number, field, &value, length, nullptr)))
                return value;
        }
        return std::nullopt;
    }

    std::string text(SQLSMALLINT field) const {
        std::string buffer(kMaxText + 1, '\0');
        SQLSMALLINT length = 0;
        const SQLRETURN code =
            m_functions.getDiagField(m_type, m_handle, m_number, field, buffer.data(), kMaxText, &length);
        buffer.resize(SQL_SUCCEEDED(code) ? buffer.find('\0') : 0);
        return buffer;
    }

  private:
    const DriverFunctions& m_functions;
    SQLSMALLINT m_type;
    SQLHANDLE m_handle;
    SQLSMALLINT m_number;
};

// Bracketed names before a message, as in "[Microsoft][ODBC Driver 17 for SQL Server][SQL Server]text".
struct Names {
    std::string driver;      // the names before the server's, joined by spaces
    std::size_t length = 0;  // bytes of all names with their brackets
};

Names namesBefore(std::string_view text) {
    Names names;
    while (text.substr(names.length).starts_with('[')) {
        const auto end = text.find(']', names.length);
        if (end == std::string_view::npos) break;
        const std::string_view name = text.substr(names.length + 1, end - names.length - 1);
        names.length = end + 1;
        if (name == "SQL Server") break;
        if (!names.driver.empty()) names.driver += ' ';
        names.driver += name;
    }
    return names;
}

// Moves the names from the messages to Diagnostic::driver. FreeTDS puts them before the text of a whole
// record only, other drivers before the text field as well.
void moveNamesToDriver(std::vector<Diagnostic>& diagnostics, const std::string& wholeText) {
    const bool inFields =
        std::any_of(diagnostics.begin(), diagnostics.end(),
                    [&](const Diagnostic& diagnostic) { return diagnostic.text == wholeText; });
    for (Diagnostic& diagnostic : diagnostics) {
        const std::string& named = inFields ? diagnostic.text : wholeText;
        const Names names = namesBefore(named);
        diagnostic.names = named.substr(0, names.length);
        diagnostic.driver = names.driver;
        if (inFields) diagnostic.text.erase(0, names.length);
    }
}

bool startsWithAny(std::string_view text, std::initializer_list<std::string_view> beginnings) {
    for (const std::string_view beginning : beginnings)
        if (text.starts_with(beginning)) return true;
    return false;
}

// A message of the server has a line. If the driver reports no lines, the SQLSTATE decides.
bool comesFromServer(const Diagnostic& diagnostic) {
    if (diagnostic.line != 0) return diagnostic.line != kDriverLine;
    if (diagnostic.sqlState == kInformation) return true;
    return diagnostic.number > 0 && !startsWithAny(diagnostic.sqlState, {"01", "08", "HY", "IM"});
}

// Severity of a driver's own message. Its warnings, such as one of a truncated value, are not printed: 0.
int severityOfDriver(const Diagnostic& diagnostic) {
    if (diagnostic.sqlState.starts_with("08")) return kDisconnectSeverity;
    const bool isWarning = diagnostic.line != kDriverLine && diagnostic.sqlState.starts_with("01");
    return isWarning ? 0 : kDriverErrorSeverity;
}

// Fills the fields that depend on the message's origin.
void complete(Diagnostic& diagnostic, const Record& record) {
    diagnostic.line = record.integer(kLine).value_or(0);
    diagnostic.fromServer = comesFromServer(diagnostic);
    if (!diagnostic.fromServer) {
        diagnostic.severity = severityOfDriver(diagnostic);
        return;
    }
    const auto severity = record.integer(kSeverity);
    const auto state = record.integer(kState);  // without kSeverity: FreeTDS, which returns the severity
    const int severityOfSqlState = diagnostic.sqlState.starts_with("01") ? 0 : kDriverErrorSeverity;
    diagnostic.severity = severity ? *severity : state.value_or(severityOfSqlState);
    if (severity) diagnostic.state = state.value_or(diagnostic.state);
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
        if (!record.readTo(diagnostic)) break;
        complete(diagnostic, record);
        result.push_back(std::move(diagnostic));
    }
    if (!result.empty()) moveNamesToDriver(result, Record(functions, handleType, handle, 1).wholeText());
    return result;
}

}  // namespace sqlcmd

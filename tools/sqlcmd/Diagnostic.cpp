#include "Diagnostic.h"

#include <algorithm>
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

    // Field by field: a driver brings the most severe record to the front when a whole one is asked for, and
    // then nobody knows any more where in a row of PRINT texts an error happened.
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

    // FreeTDS refuses the length that means "an integer", other drivers may want it.
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

// The names before a text, as in "[Microsoft][ODBC Driver 17 for SQL Server][SQL Server]text".
struct Names {
    std::string driver;  // those before the server's
    std::size_t length = 0;
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

// FreeTDS puts the names before the text of a whole record only, other drivers before a field's as well.
void takeNames(std::vector<Diagnostic>& diagnostics, const std::string& wholeText) {
    const bool inFields =
        std::any_of(diagnostics.begin(), diagnostics.end(),
                    [&](const Diagnostic& diagnostic) { return diagnostic.text == wholeText; });
    for (Diagnostic& diagnostic : diagnostics) {
        const Names names = namesBefore(inFields ? diagnostic.text : wholeText);
        diagnostic.driver = names.driver;
        if (inFields) diagnostic.text.erase(0, names.length);
    }
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
    diagnostic.line = record.integer(kLine).value_or(0);
    diagnostic.fromServer = comesFromServer(diagnostic);
    if (!diagnostic.fromServer) {
        diagnostic.severity = severityOfDriver(diagnostic);
        return;
    }
    const auto severity = record.integer(kSeverity);
    const auto state = record.integer(kState);
    diagnostic.severity =
        severity ? *severity : state.value_or(diagnostic.sqlState.starts_with("01") ? 0 : kErrorSeverity);
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
        if (!record.readTo(diagnostic)) break;
        complete(diagnostic, record);
        result.push_back(std::move(diagnostic));
    }
    if (!result.empty()) takeNames(result, Record(functions, handleType, handle, 1).wholeText());
    return result;
}

}  // namespace sqlcmd

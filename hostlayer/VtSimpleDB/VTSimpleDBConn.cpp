#include "VTSimpleDBConn.h"

#include <string.h>

#include <charconv>
#include <cstring>
#include <optional>
#include <vector>

#include "ConnectionString.h"
#include "EvDebug.h"
#include "HostSettings.h"
#include "Odbc.h"
#include "Rows.h"
#include "Utf16.h"
#include "VtCauses.h"

namespace {

using hostlayer::Fetched;
using hostlayer::OdbcHandle;
using hostlayer::odbcText;

constexpr const char* kDefaultDriver = "FreeTDS";
constexpr const char* kDefaultAttributes = "TDS_Version=7.4;ClientCharset=UTF-8";
constexpr SQLULEN kDefaultLoginTimeout = 15;         // seconds
constexpr std::size_t kMaxConnectionString = 32767;  // bytes; ODBC counts them in 16 bits
constexpr int kErrorLevel = 1;                       // of the debug log

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

// Logs a failure that is not the driver's, and notes it as a cause.
void reportError(VtCause::Place place, const std::string& text) {
    EvDebug().DebugLevel(kErrorLevel, "%s", text.c_str());
    VtNoteCause({.place = place, .text = text});
}

// Converts the whole text. If it is not UTF-8, reports `refusal` with the position and returns false: a
// DELETE cut off there might have lost its WHERE.
bool convertOrReport(VtCause::Place place, const char* text, std::u16string& wide, const char* refusal) {
    const std::size_t invalid = hostlayer::toUtf16(text, wide);
    if (invalid == std::string_view::npos) return true;
    reportError(place, std::string(refusal) + ": its byte " + std::to_string(invalid + 1) + " is not UTF-8");
    return false;
}

// Seconds; 0 waits without a limit.
SQLULEN loginTimeout() {
    SQLULEN seconds = kDefaultLoginTimeout;
    const std::string text = hostlayer::hostSetting("loginTimeout", "");
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    return seconds;
}

}  // namespace

// A statement that has run. The connection and the result bound to it share it: after finish(), the result
// has no more rows to read.
struct OpenStatement {
    OdbcHandle handle;     // empty: not run yet, failed or finished
    bool hasRows = false;  // the current result is a result set
    std::unique_ptr<hostlayer::RowReader> rows;

    bool run(SQLHANDLE connection, std::u16string& sql, bool prepared);
    bool skipToFirstRows();
    void finish();
};

bool OpenStatement::run(SQLHANDLE connection, std::u16string& sql, bool prepared) {
    handle = OdbcHandle(SQL_HANDLE_STMT, connection);
    if (!handle) return false;
    if (!prepared) return handle.check(::SQLExecDirectW(handle.get(), odbcText(sql), SQL_NTS), "Execute");
    return handle.check(::SQLPrepareW(handle.get(), odbcText(sql), SQL_NTS), "Prepare") &&
           handle.check(::SQLExecute(handle.get()), "Execute");
}

// Skips the row counts of statements that return no rows. Errors of these statements are reported here:
// false.
bool OpenStatement::skipToFirstRows() {
    for (;;) {
        SQLSMALLINT columns = 0;
        if (!handle.check(::SQLNumResultCols(handle.get(), &columns), "Count columns")) return false;
        hasRows = columns > 0;
        if (hasRows) return true;
        const SQLRETURN result = ::SQLMoreResults(handle.get());
        if (result == SQL_NO_DATA) return true;
        if (!handle.check(result, "Execute")) return false;
    }
}

// Reads the batch to its end: cancelling it would skip or roll back the statements after its first rows.
void OpenStatement::finish() {
    rows.reset();
    if (!handle) return;
    SQLRETURN result = SQL_SUCCESS;
    do {
        result = ::SQLMoreResults(handle.get());
    } while (handle.check(result, "Execute") && result != SQL_NO_DATA);
    handle = OdbcHandle();
}

struct VTSimpleDBConnObject::Impl {
    bool connect(const char* connectionString, bool readOnly);
    void close();

    OdbcHandle environment;
    OdbcHandle connection;
    std::shared_ptr<OpenStatement> statement = std::make_shared<OpenStatement>();
    bool isOpen = false;
};

bool VTSimpleDBConnObject::Impl::connect(const char* connectionString, bool readOnly) {
    environment = OdbcHandle::environment();
    if (!environment) return false;
    const auto version = hostlayer::odbcNumber(SQL_OV_ODBC3);
    if (!environment.check(::SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, version, 0), "Set up"))
        return false;
    connection = OdbcHandle(SQL_HANDLE_DBC, environment.get());
    if (!connection) return false;
    const auto setAttribute = [&](SQLINTEGER attribute, SQLULEN value) {
        return connection.check(
            ::SQLSetConnectAttr(connection.get(), attribute, hostlayer::odbcNumber(value), 0), "Set up");
    };
    if (!setAttribute(SQL_ATTR_LOGIN_TIMEOUT, loginTimeout())) return false;
    if (readOnly && !setAttribute(SQL_ATTR_ACCESS_MODE, SQL_MODE_READ_ONLY)) return false;
    std::u16string text;
    isOpen = convertOrReport(VtCause::kConnection, connectionString, text,
                             "Connect: the connection string is not used") &&
             connection.check(::SQLDriverConnectW(connection.get(), nullptr, odbcText(text), SQL_NTS, nullptr,
                                                  0, nullptr, SQL_DRIVER_NOPROMPT),
                              "Connect");
    ::explicit_bzero(text.data(), text.size() * sizeof(char16_t));
    return isOpen;
}

void VTSimpleDBConnObject::Impl::close() {
    statement->finish();
    if (isOpen) connection.check(::SQLDisconnect(connection.get()), "Disconnect");
    isOpen = false;
    connection = OdbcHandle();
    environment = OdbcHandle();
}

VTSimpleDBConnObject::VTSimpleDBConnObject() : m_impl(std::make_unique<Impl>()) {}

VTSimpleDBConnObject::~VTSimpleDBConnObject() {
    m_impl->close();
}

std::string VTSimpleDBConnObject::getConnectionString(const char* server, const char* database,
                                                      const char* user, const char* password,
                                                      bool windowsAuthentication, bool encrypt) const {
    hostlayer::ConnectionRequest request{
        {}, orEmpty(database), orEmpty(user), orEmpty(password), windowsAuthentication, encrypt};
    const hostlayer::ConnectionSettings settings{
        hostlayer::hostSetting("odbcDriver", kDefaultDriver),
        hostlayer::hostSetting("odbcAttributes", kDefaultAttributes)};
    std::string text;
    std::string problem;
    if (!hostlayer::parseServer(orEmpty(server), request.server, problem) ||
        !hostlayer::makeConnectionString(settings, request, text, problem))
        reportError(VtCause::kConnection, "Connect: " + problem);
    return text;
}

int VTSimpleDBConnObject::OpenSQLConnectionUsingConnectionString(const char* connectionString,
                                                                 bool readOnly) {
    m_impl->close();
    const std::size_t length = std::strlen(orEmpty(connectionString));
    if (length == 0 || length > kMaxConnectionString) {
        reportError(VtCause::kConnection, length == 0 ? "Connect: the connection string is empty"
                                                      : "Connect: the connection string is too long");
        return -1;
    }
    if (m_impl->connect(connectionString, readOnly)) return 0;
    m_impl->close();
    return -1;
}

int VTSimpleDBConnObject::CloseSQLConnection() {
    m_impl->close();
    return 0;
}

int VTSimpleDBConnObject::executeQuery(const char* sql, bool prepared) {
    if (!m_impl->isOpen || sql == nullptr) {
        reportError(
            sql == nullptr ? VtCause::kStatement : VtCause::kConnection,
            sql == nullptr ? "Execute: the statement is null" : "Execute: the connection is not open");
        return -1;
    }
    m_impl->statement->finish();
    m_impl->statement = std::make_shared<OpenStatement>();
    std::u16string text;
    if (!convertOrReport(VtCause::kStatement, sql, text, "Execute: the statement is not run")) return -1;
    if (m_impl->statement->run(m_impl->connection.get(), text, prepared) &&
        m_impl->statement->skipToFirstRows())
        return 0;
    m_impl->statement->finish();
    return -1;
}

struct VTDBAutoBindResult::Impl {
    std::shared_ptr<OpenStatement> statement;
    std::vector<std::optional<std::string_view>> values;
    std::vector<VTDBDataTypeBase> columns;
    int state = -1;  // the last result of getNextRow(); final once it is not 0
};

int VTSimpleDBConnObject::autoBind(VTDBAutoBindResult& result) {
    result.m_impl = std::make_unique<VTDBAutoBindResult::Impl>();
    VTDBAutoBindResult::Impl& bound = *result.m_impl;
    OpenStatement& statement = *m_impl->statement;
    if (statement.handle && !statement.hasRows) return bound.state = 1;
    std::vector<hostlayer::ColumnDescription> columns;
    if (!statement.handle || !describeColumns(statement.handle, columns)) return -1;
    statement.rows.reset();  // its destructor unbinds the columns of an earlier result
    statement.rows = hostlayer::makeRowReader(statement.handle, columns);
    if (!statement.rows) return -1;
    bound.statement = m_impl->statement;
    bound.values.resize(columns.size());
    bound.columns.resize(columns.size());
    return bound.state = 0;
}

VTDBAutoBindResult::VTDBAutoBindResult() : m_impl(std::make_unique<Impl>()) {}

VTDBAutoBindResult::~VTDBAutoBindResult() = default;

int VTDBAutoBindResult::columnCount() const {
    return static_cast<int>(m_impl->columns.size());
}

int VTDBAutoBindResult::getNextRow() {
    Impl& result = *m_impl;
    if (result.state != 0) return result.state;
    const auto& rows = result.statement->rows;
    const Fetched fetched = rows ? rows->next(result.values) : Fetched::kFailure;
    if (fetched != Fetched::kRow) result.state = fetched == Fetched::kEnd ? 1 : -1;
    for (std::size_t i = 0; i < result.columns.size(); ++i) {
        const bool hasValue = result.state == 0 && result.values[i].has_value();
        result.columns[i].m_null = !hasValue;
        result.columns[i].m_text = hasValue ? *result.values[i] : std::string_view();
    }
    return result.state;
}

const VTDBDataTypeBase& VTDBAutoBindResult::column(int index) const {
    static const VTDBDataTypeBase nullColumn;
    const bool exists = index >= 0 && index < columnCount();
    return exists ? m_impl->columns[static_cast<std::size_t>(index)] : nullColumn;
}

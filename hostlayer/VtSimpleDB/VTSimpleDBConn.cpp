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

namespace {

using hostlayer::Fetched;
using hostlayer::OdbcHandle;
using hostlayer::odbcText;

constexpr const char* kDefaultDriver = "FreeTDS";
constexpr const char* kDefaultAttributes = "TDS_Version=7.4;ClientCharset=UTF-8";
constexpr const char* kDefaultLoginTimeout = "15";
constexpr std::size_t kMaxConnectionString = 32767;

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

void logError(const std::string& text) {
    EvDebug().DebugLevel(1, "%s", text.c_str());
}

// False, and `refusal` goes to the debug log, for a text that is not UTF-8: a DELETE that ended before such
// bytes would have lost its WHERE.
bool toWide(const char* text, std::u16string& wide, const char* refusal) {
    const std::size_t fault = hostlayer::toUtf16(text, wide);
    if (fault == std::string_view::npos) return true;
    logError(std::string(refusal) + ": its byte " + std::to_string(fault + 1) + " is not UTF-8");
    return false;
}

SQLULEN loginTimeout() {
    SQLULEN seconds = 15;
    const std::string text = hostlayer::hostSetting("loginTimeout", kDefaultLoginTimeout);
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    return seconds;
}

}  // namespace

// What a statement and the result that is bound to it share. The connection drops it; a result that is still
// there then finds it without a handle.
struct OpenStatement {
    OdbcHandle handle;
    bool hasRows = false;
    std::unique_ptr<hostlayer::RowReader> rows;

    bool run(SQLHANDLE connection, std::u16string& sql, bool prepared);
    bool goToFirstRows();
    void drop();
};

bool OpenStatement::run(SQLHANDLE connection, std::u16string& sql, bool prepared) {
    handle = OdbcHandle(SQL_HANDLE_STMT, connection);
    if (!handle) return false;
    if (!prepared) return handle.check(::SQLExecDirectW(handle.get(), odbcText(sql), SQL_NTS), "Execute");
    return handle.check(::SQLPrepareW(handle.get(), odbcText(sql), SQL_NTS), "Prepare") &&
           handle.check(::SQLExecute(handle.get()), "Execute");
}

// Passes the row counts of statements without rows; their errors come to light here.
bool OpenStatement::goToFirstRows() {
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

// The batch is read to its end: to break it off would undo or skip statements that stand after its rows.
void OpenStatement::drop() {
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
    const auto set = [&](SQLINTEGER attribute, SQLULEN value) {
        return connection.check(
            ::SQLSetConnectAttr(connection.get(), attribute, hostlayer::odbcNumber(value), 0), "Set up");
    };
    if (!set(SQL_ATTR_LOGIN_TIMEOUT, loginTimeout())) return false;
    if (readOnly && !set(SQL_ATTR_ACCESS_MODE, SQL_MODE_READ_ONLY)) return false;
    std::u16string target;
    isOpen = toWide(connectionString, target, "Connect: the connection string is not used") &&
             connection.check(::SQLDriverConnectW(connection.get(), nullptr, odbcText(target), SQL_NTS,
                                                  nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT),
                              "Connect");
    ::explicit_bzero(target.data(), target.size() * sizeof(char16_t));
    return isOpen;
}

void VTSimpleDBConnObject::Impl::close() {
    statement->drop();
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
        logError("Connect: " + problem);
    return text;
}

int VTSimpleDBConnObject::OpenSQLConnectionUsingConnectionString(const char* connectionString,
                                                                 bool readOnly) {
    m_impl->close();
    const std::size_t length = std::strlen(orEmpty(connectionString));
    if (length == 0 || length > kMaxConnectionString) {
        logError(length == 0 ? "Connect: there is no connection string"
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
        logError(sql == nullptr ? "Execute: there is no statement" : "Execute: the connection is not open");
        return -1;
    }
    m_impl->statement->drop();
    m_impl->statement = std::make_shared<OpenStatement>();
    std::u16string text;
    if (!toWide(sql, text, "Execute: the statement is not run")) return -1;
    if (m_impl->statement->run(m_impl->connection.get(), text, prepared) &&
        m_impl->statement->goToFirstRows())
        return 0;
    m_impl->statement->drop();
    return -1;
}

struct VTDBAutoBindResult::Impl {
    std::shared_ptr<OpenStatement> statement;
    std::vector<std::optional<std::string_view>> values;
    std::vector<VTDBDataTypeBase> columns;
    int state = -1;  // what getNextRow() answers; kept once it is not 0
};

int VTSimpleDBConnObject::autoBind(VTDBAutoBindResult& result) {
    result.m_impl = std::make_unique<VTDBAutoBindResult::Impl>();
    VTDBAutoBindResult::Impl& bound = *result.m_impl;
    OpenStatement& statement = *m_impl->statement;
    if (statement.handle && !statement.hasRows) return bound.state = 1;
    std::vector<hostlayer::ColumnDescription> columns;
    if (!statement.handle || !describeColumns(statement.handle, columns)) return -1;
    statement.rows.reset();  // an earlier result's, if there is one
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
        const bool isThere = result.state == 0 && result.values[i].has_value();
        result.columns[i].m_null = !isThere;
        result.columns[i].m_text = isThere ? *result.values[i] : std::string_view();
    }
    return result.state;
}

const VTDBDataTypeBase& VTDBAutoBindResult::column(int index) const {
    static const VTDBDataTypeBase none;
    const bool isThere = index >= 0 && index < columnCount();
    return isThere ? m_impl->columns[static_cast<std::size_t>(index)] : none;
}

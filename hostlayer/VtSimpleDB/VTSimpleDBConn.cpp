#include "VTSimpleDBConn.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "ConnectionString.h"
#include "EvDebug.h"
#include "HostSettings.h"
#include "IdleLogins.h"
#include "Login.h"
#include "Odbc.h"
#include "Rows.h"
#include "ServerRequest.h"
#include "SqlEffect.h"
#include "VtCauses.h"

namespace {

using hostlayer::Fetched;
using hostlayer::Login;
using hostlayer::numberSetting;
using hostlayer::OdbcHandle;
using hostlayer::odbcText;
using hostlayer::RequestLimits;
using hostlayer::ServerRequest;
using hostlayer::SqlEffect;

constexpr const char* kDefaultDriver = "FreeTDS";
constexpr const char* kDefaultAttributes = "TDS_Version=7.4;ClientCharset=UTF-8";
constexpr unsigned int kDefaultLoginTimeout = 15;    // seconds; 0 waits without a limit
constexpr unsigned int kDefaultNetworkTimeout = 60;  // seconds; 0: the kernel's limit
constexpr unsigned int kDefaultQueryTimeout = 0;     // seconds; 0 waits without a limit
constexpr unsigned int kLongestTimeout = 2'000'000;  // seconds; FreeTDS counts milliseconds in an int
constexpr unsigned int kDefaultReplyLimit = 1024;    // MiB; 0: no limit
constexpr unsigned int kDefaultConnectionReuse = 5;  // seconds; 0 keeps no login
// Few messages belong to a login. The driver manager's time grows with the square of their number.
constexpr std::uint64_t kLoginReplyLimit = std::uint64_t{1} << 20;  // bytes
constexpr std::chrono::milliseconds kLoginTick{10};
constexpr std::size_t kMaxConnectionString = 32767;  // bytes; ODBC counts them in 16 bits

const char* orEmpty(const char* text) {
    return text != nullptr ? text : "";
}

RequestLimits limitsOf(const char* timeSetting, unsigned int seconds) {
    return {std::chrono::seconds(std::min(numberSetting(timeSetting, seconds), kLongestTimeout)),
            std::uint64_t{numberSetting("replyLimit", kDefaultReplyLimit)} << 20, timeSetting};
}

// Reports a lost connection, for which FreeTDS has the message "Unknown error" only.
void reportLostConnection() {
    const VtCause cause{
        .place = VtCause::kConnection, .sqlState = "08S01", .text = "the connection to the server has ended"};
    EvDebug().DebugLevel(kErrorDebugLevel, "Execute: %s", cause.text.c_str());
    VtNoteCause(cause);
}

}  // namespace

// A statement that has run. The connection and the result bound to it share it: after finish(), the result
// has no more rows to read.
struct OpenStatement {
    std::unique_ptr<ServerRequest> request;
    OdbcHandle handle;     // empty: not run yet, failed or finished
    bool hasRows = false;  // the current result is a result set
    bool hasFailed = false;
    std::unique_ptr<hostlayer::RowReader> rows;

    bool run(const Login& login, std::u16string& sql, bool prepared);
    bool skipToFirstRows();
    bool isCut() const { return request && request->isCut(); }
    SQLRETURN nextResult() const;
    void finish();
};

// The driver cancels a statement at its time-out; a server that does not answer to that is cut off.
bool OpenStatement::run(const Login& login, std::u16string& sql, bool prepared) {
    const RequestLimits limits = limitsOf("queryTimeout", kDefaultQueryTimeout);
    handle = login.newStatement();
    if (!handle) return false;
    if (limits.time > std::chrono::seconds::zero()) {
        const auto seconds = hostlayer::odbcNumber(static_cast<SQLULEN>(limits.time.count()));
        handle.check(::SQLSetStmtAttr(handle.get(), SQL_ATTR_QUERY_TIMEOUT, seconds, 0), "Set time-out");
    }
    request = std::make_unique<ServerRequest>([&login] { return login.sockets(); }, limits);
    const auto execute = [&](const auto& function) {
        const ServerRequest::Call call(*request);
        return request->isCut() ? SQLRETURN{SQL_ERROR} : function();
    };
    if (!prepared)
        return handle.check(execute([&] { return ::SQLExecDirectW(handle.get(), odbcText(sql), SQL_NTS); }),
                            "Execute");
    return handle.check(execute([&] { return ::SQLPrepareW(handle.get(), odbcText(sql), SQL_NTS); }),
                        "Prepare") &&
           handle.check(execute([&] { return ::SQLExecute(handle.get()); }), "Execute");
}

SQLRETURN OpenStatement::nextResult() const {
    const ServerRequest::Call call(*request);
    return ::SQLMoreResults(handle.get());
}

// Skips the row counts of statements that return no rows. Errors of these statements are reported here:
// false.
bool OpenStatement::skipToFirstRows() {
    for (;;) {
        SQLSMALLINT columns = 0;
        if (!handle.check(::SQLNumResultCols(handle.get(), &columns), "Count columns")) return false;
        hasRows = columns > 0;
        if (hasRows) return true;
        const SQLRETURN result = nextResult();
        if (result == SQL_NO_DATA) return true;
        if (!handle.check(result, "Execute")) return false;
    }
}

// Reads the batch to its end: cancelling it would skip or roll back the statements after its first rows.
void OpenStatement::finish() {
    rows.reset();
    if (!handle || !request) {
        handle = OdbcHandle();
        return;
    }
    SQLRETURN result = SQL_SUCCESS;
    do {
        result = nextResult();
    } while (handle.check(result, "Execute") && result != SQL_NO_DATA);
    hasFailed = hasFailed || result != SQL_NO_DATA;
    handle = OdbcHandle();
    request.reset();
}

struct VTSimpleDBConnObject::Impl {
    bool connect(const char* connectionString, bool readOnly);
    bool logIn(std::unique_ptr<Login> next);
    bool run(const char* sql, bool prepared);
    void finishStatement();
    void close();

    std::unique_ptr<Login> login;  // null: not open
    bool isReused = false;         // an earlier user may have set NOCOUNT
    bool hasOthersIdentity = false;
    std::shared_ptr<OpenStatement> statement = std::make_shared<OpenStatement>();
};

bool VTSimpleDBConnObject::Impl::connect(const char* connectionString, bool readOnly) {
    login = hostlayer::takeIdleLogin(connectionString, readOnly);
    isReused = login != nullptr;
    hasOthersIdentity = isReused && login->hasIdentity();
    if (isReused) return true;
    return logIn(std::make_unique<Login>(connectionString, readOnly));
}

bool VTSimpleDBConnObject::Impl::logIn(std::unique_ptr<Login> next) {
    login = std::move(next);
    isReused = hasOthersIdentity = false;
    RequestLimits limits = limitsOf("loginTimeout", kDefaultLoginTimeout);
    limits.bytes = kLoginReplyLimit;
    limits.tick = kLoginTick;
    limits.network = std::chrono::seconds(numberSetting("networkTimeout", kDefaultNetworkTimeout));
    if (login->connect(limits)) return true;
    login.reset();
    return false;
}

bool VTSimpleDBConnObject::Impl::run(const char* sql, bool prepared) {
    std::u16string text;
    if (!hostlayer::convertOrReport(VtCause::kStatement, sql, text, "Execute: the statement is not run"))
        return false;
    const SqlEffect effect = hostlayer::effectOf(sql);
    const bool readsOthersIdentity =
        hasOthersIdentity &&
        (effect == SqlEffect::kIdentity || effect == SqlEffect::kServer || hostlayer::mayReadIdentity(sql));
    if (readsOthersIdentity && !logIn(login->another())) return false;
    if (effect == SqlEffect::kIdentity) login->noteIdentity();
    if (effect > SqlEffect::kIdentity) login->forbidReuse();
    if (effect == SqlEffect::kServer) hostlayer::endIdleSessions();
    if (effect == SqlEffect::kServer && std::exchange(isReused, false)) login->restoreRowCounts();
    if (statement->run(*login, text, prepared) && statement->skipToFirstRows()) return true;
    if (!statement->isCut() && login->hasEnded()) reportLostConnection();
    statement->hasFailed = true;
    return false;
}

void VTSimpleDBConnObject::Impl::finishStatement() {
    statement->finish();
    if (statement->hasFailed) login->forbidReuse();
}

void VTSimpleDBConnObject::Impl::close() {
    if (login == nullptr) return;
    finishStatement();
    const std::chrono::seconds reuse(numberSetting("connectionReuse", kDefaultConnectionReuse));
    hostlayer::keepIdleLogin(std::move(login), reuse);
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
    const hostlayer::ConnectionSettings settings{hostlayer::hostSetting("odbcDriver", kDefaultDriver),
                                                 hostlayer::hostSetting("odbcAttributes", kDefaultAttributes),
                                                 hostlayer::hostSetting("encrypt", ""),
                                                 hostlayer::hostSetting("caFile", "")};
    std::string text;
    std::string problem;
    if (!hostlayer::parseServer(orEmpty(server), request.server, problem) ||
        !hostlayer::makeConnectionString(settings, request, text, problem))
        hostlayer::reportError(VtCause::kConnection, "Connect: " + problem);
    return text;
}

int VTSimpleDBConnObject::OpenSQLConnectionUsingConnectionString(const char* connectionString,
                                                                 bool readOnly) {
    m_impl->close();
    const std::size_t length = std::strlen(orEmpty(connectionString));
    if (length == 0 || length > kMaxConnectionString) {
        hostlayer::reportError(VtCause::kConnection, length == 0
                                                         ? "Connect: the connection string is empty"
                                                         : "Connect: the connection string is too long");
        return -1;
    }
    return m_impl->connect(connectionString, readOnly) ? 0 : -1;
}

int VTSimpleDBConnObject::CloseSQLConnection() {
    m_impl->close();
    return 0;
}

int VTSimpleDBConnObject::executeQuery(const char* sql, bool prepared) {
    if (m_impl->login == nullptr || sql == nullptr) {
        hostlayer::reportError(
            sql == nullptr ? VtCause::kStatement : VtCause::kConnection,
            sql == nullptr ? "Execute: the statement is null" : "Execute: the connection is not open");
        return -1;
    }
    m_impl->finishStatement();
    m_impl->statement = std::make_shared<OpenStatement>();
    if (m_impl->run(sql, prepared)) return 0;
    m_impl->finishStatement();
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
    std::optional<ServerRequest::Call> call;
    if (rows && !rows->hasBufferedRow()) call.emplace(*result.statement->request);
    const Fetched fetched = rows ? rows->next(result.values) : Fetched::kFailure;
    if (fetched != Fetched::kRow) result.state = fetched == Fetched::kEnd ? 1 : -1;
    if (fetched == Fetched::kFailure) result.statement->hasFailed = true;
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

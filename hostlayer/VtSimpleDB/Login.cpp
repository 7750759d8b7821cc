#include "Login.h"

#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "ConnectionString.h"
#include "EvDebug.h"
#include "KerberosTicket.h"
#include "NetworkTimeout.h"
#include "Utf16.h"

namespace hostlayer {
namespace {

constexpr int kSessionEndMilliseconds = 1000;

// Where Kerberos finds the tickets of this process. Another identity must not continue a login.
std::string windowsIdentity() {
    std::string identity = std::to_string(::geteuid());
    for (const char* name : {"KRB5CCNAME", "KRB5_CLIENT_KTNAME"}) {
        const char* value = std::getenv(name);
        identity += std::string(" ") + (value != nullptr ? value : "");
    }
    return identity;
}

}  // namespace

void reportError(VtCause::Place place, const std::string& text) {
    EvDebug().DebugLevel(kErrorDebugLevel, "%s", text.c_str());
    VtNoteCause({.place = place, .text = text});
}

bool convertOrReport(VtCause::Place place, std::string_view text, std::u16string& wide, const char* refusal) {
    const std::size_t invalid = toUtf16(text, wide);
    if (invalid == std::string_view::npos) return true;
    reportError(place, std::string(refusal) + ": its byte " + std::to_string(invalid + 1) + " is not UTF-8");
    return false;
}

Login::Login(std::string_view connectionString, bool readOnly)
    : m_connectionString(connectionString),
      m_identity(windowsIdentity()),
      m_readOnly(readOnly),
      m_process(::getpid()) {}

Login::~Login() {
    if (m_isConnected) m_connection.check(::SQLDisconnect(m_connection.get()), "Disconnect");
    ::explicit_bzero(m_connectionString.data(), m_connectionString.size());
}

bool Login::connect(const RequestLimits& limits) {
    m_limits = limits;
    m_environment = OdbcHandle::environment();
    if (!m_environment) {
        reportError(VtCause::kConnection, "Connect: the ODBC driver manager has no environment handle");
        return false;
    }
    const auto version = odbcNumber(SQL_OV_ODBC3);
    if (!m_environment.check(::SQLSetEnvAttr(m_environment.get(), SQL_ATTR_ODBC_VERSION, version, 0),
                             "Set up"))
        return false;
    m_connection = OdbcHandle(SQL_HANDLE_DBC, m_environment.get());
    if (!m_connection) {
        m_environment.reportFailure("Connect");
        return false;
    }
    const auto setAttribute = [&](SQLINTEGER attribute, SQLULEN value) {
        return m_connection.check(::SQLSetConnectAttr(m_connection.get(), attribute, odbcNumber(value), 0),
                                  "Set up");
    };
    if (!setAttribute(SQL_ATTR_LOGIN_TIMEOUT, static_cast<SQLULEN>(limits.time.count()))) return false;
    if (m_readOnly && !setAttribute(SQL_ATTR_ACCESS_MODE, SQL_MODE_READ_ONLY)) return false;
    std::u16string text;
    const NewSockets newSockets;
    ServerRequest request([&newSockets] { return newSockets.findAll(); }, limits);
    m_isConnected = convertOrReport(VtCause::kConnection, m_connectionString, text,
                                    "Connect: the connection string is not used") &&
                    driverConnects(text, request);
    ::explicit_bzero(text.data(), text.size() * sizeof(char16_t));
    if (m_isConnected) m_sockets = newSockets.findConnected();
    for (const ServerSocket& socket : m_sockets)
        if (socket.hasKeepAlive()) setNetworkTimeout(socket.descriptor, limits.network);
    return m_isConnected;
}

bool Login::driverConnects(std::u16string& text, ServerRequest& request) const {
    const auto connect = [&] {
        const ServerRequest::Call call(request);
        return request.isCut() ? SQLRETURN{SQL_ERROR}
                               : ::SQLDriverConnectW(m_connection.get(), nullptr, odbcText(text), SQL_NTS,
                                                     nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    };
    SQLRETURN result = connect();
    if (!SQL_SUCCEEDED(result) && !request.isCut() && mayHaveMissedFirstTicket()) result = connect();
    if (!SQL_SUCCEEDED(result) && !request.isCut()) reportReason();
    return m_connection.check(result, "Connect");
}

// Another thread or process was writing the first ticket of a client keytab: there is one by now.
bool Login::mayHaveMissedFirstTicket() const {
    return std::getenv("KRB5_CLIENT_KTNAME") != nullptr && !m_connection.hasServerMessage() &&
           freetds::usesTicket(m_connectionString) && freetds::ticketProblem(m_connectionString).empty();
}

// What FreeTDS does not say: a missing or refused Kerberos ticket; without a message of the server, the
// network or an encryption that is refused.
void Login::reportReason() const {
    const std::string problem = freetds::ticketProblem(m_connectionString);
    if (!problem.empty()) return reportError(VtCause::kConnection, "Connect: " + problem);
    if (m_connection.hasServerMessage()) return;
    const auto target = probeTargetOf(m_connectionString);
    const std::string reason = target ? reasonOfFailedLogin(*target, m_limits.time) : "";
    if (reason.empty()) return;
    EvDebug().DebugLevel(kErrorDebugLevel, "Connect: %s", reason.c_str());
    VtNoteCause({.place = VtCause::kConnection, .sqlState = "08001", .server = target->host, .text = reason});
}

bool Login::isFor(std::string_view connectionString, bool readOnly) const {
    return m_readOnly == readOnly && m_connectionString == connectionString &&
           m_identity == windowsIdentity();
}

OdbcHandle Login::newStatement() const {
    OdbcHandle statement(SQL_HANDLE_STMT, m_connection.get());
    if (!statement) m_connection.reportFailure("Create statement");
    return statement;
}

bool Login::isReusable() const {
    return m_isConnected && m_isClean && m_process == ::getpid();
}

// The session is as after the login in any case, so a driver that does not support the attribute is no
// failure.
void Login::requestReset() const {
    ::SQLSetConnectAttr(m_connection.get(), SQL_ATTR_RESET_CONNECTION, odbcNumber(SQL_RESET_CONNECTION_YES),
                        SQL_IS_UINTEGER);
}

void Login::endSession() const {
    if (m_sockets.size() != 1) return;  // others may be those of another thread
    const ServerSocket& socket = m_sockets.front();
    if (!socket.isOpen() || ::shutdown(socket.descriptor, SHUT_WR) != 0) return;
    pollfd closed{socket.descriptor, POLLRDHUP, 0};
    ::poll(&closed, 1, kSessionEndMilliseconds);
}

bool Login::hasEnded() const {
    SQLUINTEGER dead = SQL_CD_FALSE;
    const SQLRETURN result =
        ::SQLGetConnectAttr(m_connection.get(), SQL_ATTR_CONNECTION_DEAD, &dead, sizeof dead, nullptr);
    return (SQL_SUCCEEDED(result) && dead == SQL_CD_TRUE) || socketsAreClosed();
}

bool Login::socketsAreClosed() const {
    const auto isInUse = [](const ServerSocket& socket) {
        char byte = 0;
        if (!socket.isOpen()) return false;
        const ssize_t count = ::recv(socket.descriptor, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT);
        return count > 0 || (count < 0 && errno == EAGAIN);
    };
    return !m_sockets.empty() && std::none_of(m_sockets.begin(), m_sockets.end(), isInUse);
}

bool Login::isAlive() const {
    return !hasEnded() && (socketsAreQuiet() || runs(u"SELECT 1"));
}

// A server sends nothing unasked, except the end of the connection.
bool Login::socketsAreQuiet() const {
    bool isKnown = false;
    for (const ServerSocket& socket : m_sockets) {
        if (!socket.isOpen()) continue;  // another thread's, closed since
        isKnown = true;
        char byte = 0;
        if (::recv(socket.descriptor, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) >= 0 || errno != EAGAIN)
            return false;
    }
    return isKnown;
}

bool Login::runs(std::u16string batch) const {
    const OdbcHandle statement(SQL_HANDLE_STMT, m_connection.get());
    ServerRequest request([this] { return m_sockets; }, m_limits);
    const ServerRequest::Call call(request);
    return statement && SQL_SUCCEEDED(::SQLExecDirectW(statement.get(), odbcText(batch), SQL_NTS)) &&
           ::SQLMoreResults(statement.get()) == SQL_NO_DATA;
}

}  // namespace hostlayer

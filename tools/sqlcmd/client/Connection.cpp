#include "client/Connection.h"

#include <sqlucode.h>

#include <cstring>
#include <new>

#include "client/Encryption.h"
#include "text/Text.h"
#include "text/Utf.h"

namespace sqlcmd {
namespace {

constexpr SQLINTEGER kOldPassword = 1226;            // SQL_COPT_SS_OLDPWD of SQL Server's drivers
constexpr std::size_t kMaxConnectionString = 32767;  // bytes; ODBC counts them in 16 bits

bool isFreeTds(std::string_view driver) {
    const std::string name = lowerCase(driver);
    return name.find("freetds") != std::string::npos || name.find("tdsodbc") != std::string::npos;
}

// Returns the value between braces. ODBC doubles a closing brace in it. FreeTDS does not: a value ends at the
// first "};", so that it cannot contain these characters.
std::string braced(std::string_view value, bool freeTds) {
    if (value.find('\0') != std::string_view::npos)
        throw ToolError("Sqlcmd: Error: a value of the connection contains a NUL character.");
    if (freeTds && value.find("};") != std::string_view::npos)
        throw ToolError(
            "Sqlcmd: Error: FreeTDS cannot connect with a value that contains '};'. Change the login's "
            "password or name.");
    std::string result = "{";
    for (const char c : value) result.append(c == '}' && !freeTds ? 2 : 1, c);
    return result + "};";
}

// Microsoft's driver expects the port after the server's name, FreeTDS in an attribute.
std::string serverAttributes(const ServerName& server, bool freeTds) {
    const std::string instance = server.instance.empty() ? "" : "\\" + server.instance;
    const std::string port = server.port == 0 ? "" : std::to_string(server.port);
    // A port identifies the instance, and FreeTDS does not accept both.
    if (freeTds) return "Server=" + server.host + (port.empty() ? instance + ";" : ";Port=" + port + ";");
    const bool isIpv6 = server.host.find(':') != std::string::npos;
    return "Server=tcp:" + (isIpv6 ? "[" + server.host + "]" : server.host) + instance +
           (port.empty() ? "" : "," + port) + ";";
}

std::string encryptionAttributes(Encryption encryption, bool trustCertificate, bool freeTds) {
    switch (encryption) {
        case Encryption::Default:
            return freeTds || !trustCertificate ? "" : "TrustServerCertificate=yes;";
        case Encryption::Off:
            return freeTds ? "Encryption=off;" : "Encrypt=no;";
        case Encryption::Require:
            return freeTds ? "Encryption=require;" : "Encrypt=yes;TrustServerCertificate=yes;";
        case Encryption::Verify:
            break;
    }
    return freeTds ? "" : "Encrypt=yes;";
}

// An integer attribute value: ODBC passes integers and pointers in the same argument.
SQLPOINTER attributeValue(SQLULEN value) {
    return reinterpret_cast<SQLPOINTER>(value);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

std::string connectionString(const Options& options, std::string_view driver) {
    const bool freeTds = isFreeTds(driver);
    const auto attribute = [&](const char* name, const std::string& value) {
        return value.empty() ? "" : std::string(name) + "=" + braced(value, freeTds);
    };
    const Encryption encryption = encryptionOf(options);
    const ServerName server = serverOf(options);
    std::string text = "DRIVER=" + braced(driver, freeTds);
    text += freeTds && encryption == Encryption::Verify
                ? "Servername=" + encryptedServer(server, options) + ";"
                : serverAttributes(server, freeTds);
    text += attribute("Database", options.database) + attribute("WSID", options.workstation) + "APP=SQLCMD;";
    if (freeTds) text += "TDS_Version=7.4;ClientCharset=UTF-8;";
    text += encryptionAttributes(encryption, options.trustCertificate, freeTds);
    if (options.packetSize != Options{}.packetSize)
        text += "PacketSize=" + std::to_string(options.packetSize) + ";";
    if (options.readOnlyIntent) text += "ApplicationIntent=ReadOnly;";
    if (options.multiSubnetFailover && !freeTds) text += "MultiSubnetFailover=Yes;";
    if (options.trusted) return text + "Trusted_Connection=yes;";
    return text + "UID=" + braced(options.user, freeTds) + "PWD=" + braced(options.password, freeTds);
}

Handle::Handle(SQLSMALLINT type, SQLHANDLE parent, DriverFunctions functions)
    : m_functions(functions), m_type(type) {
    if (!SQL_SUCCEEDED(m_functions.allocHandle(type, parent, &m_handle))) throw std::bad_alloc();
    if (type == SQL_HANDLE_ENV)
        SQLSetEnvAttr(m_handle, SQL_ATTR_ODBC_VERSION, attributeValue(SQL_OV_ODBC3), 0);
}

Handle::~Handle() {
    m_functions.freeHandle(m_type, m_handle);
}

Connection::Connection(Options& options, std::string_view driver, std::string oldPassword)
    : m_environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE),
      m_connection(SQL_HANDLE_DBC, m_environment.get()),
      m_queryTimeout(options.queryTimeout) {
    std::string text = connectionString(options, driver);
    explicit_bzero(options.password.data(), options.password.size());
    SQLSetConnectAttr(m_connection.get(), SQL_ATTR_LOGIN_TIMEOUT,
                      attributeValue(static_cast<SQLULEN>(options.loginTimeout)), SQL_IS_UINTEGER);
    if (!oldPassword.empty())
        SQLSetConnectAttr(m_connection.get(), kOldPassword, oldPassword.data(), SQL_NTS);
    explicit_bzero(oldPassword.data(), oldPassword.size());
    logIn(text);
    m_driver = driverOf(m_connection.get());
}

void Connection::logIn(std::string& text) {
    if (text.size() > kMaxConnectionString)
        throw ToolError("Sqlcmd: Error: server, login, password and database are too long together.");
    std::string wide;               // UTF-16: the driver manager would treat another string as Latin-1
    wide.reserve(2 * text.size());  // growing would leave copies of the password
    appendUtf16Le(wide, text);
    const SQLRETURN code = SQLDriverConnectW(
        m_connection.get(), nullptr, reinterpret_cast<SQLWCHAR*>(wide.data()),
        static_cast<SQLSMALLINT>(wide.size() / 2), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    explicit_bzero(text.data(), text.size());
    explicit_bzero(wide.data(), wide.size());
    m_connected = SQL_SUCCEEDED(code);
    if (!m_connected) throw LoginError(m_connection.diagnostics());
}

Connection::~Connection() {
    if (m_connected) SQLDisconnect(m_connection.get());
}

bool Connection::isDead() const {
    SQLUINTEGER dead = SQL_CD_FALSE;
    SQLGetConnectAttr(m_connection.get(), SQL_ATTR_CONNECTION_DEAD, &dead, sizeof dead, nullptr);
    return dead == SQL_CD_TRUE;
}

Statement::Statement(const Connection& connection)
    : m_functions(connection.driver().functions),
      m_handle(SQL_HANDLE_STMT, connection.driver().connection, m_functions) {
    if (connection.queryTimeout() > 0)
        m_functions.setStmtAttr(m_handle.get(), SQL_ATTR_QUERY_TIMEOUT,
                                attributeValue(static_cast<SQLULEN>(connection.queryTimeout())), 0);
}

SQLRETURN Statement::execute(const std::string& batch) {
    std::string text = batch;  // ODBC's parameter is not const
    return m_functions.execDirect(m_handle.get(), reinterpret_cast<SQLCHAR*>(text.data()),
                                  static_cast<SQLINTEGER>(text.size()));
}

SQLRETURN Statement::nextResult() {
    return m_functions.moreResults(m_handle.get());
}

SQLRETURN Statement::fetch() {
    return m_functions.fetch(m_handle.get());
}

int Statement::columnCount() const {
    SQLSMALLINT count = 0;
    return SQL_SUCCEEDED(m_functions.numResultCols(m_handle.get(), &count)) ? count : 0;
}

long long Statement::rowCount() const {
    SQLLEN count = -1;
    return SQL_SUCCEEDED(m_functions.rowCount(m_handle.get(), &count)) ? count : -1;
}

}  // namespace sqlcmd

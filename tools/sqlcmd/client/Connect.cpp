#include "client/Connect.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "ServerProbe.h"
#include "client/DbLibClient.h"
#include "client/Encryption.h"
#include "client/OdbcClient.h"
#include "client/ServerBrowser.h"
#include "options/ServerName.h"

namespace sqlcmd {
namespace {

// Ends the process if a login lasts longer than its time-out: a driver counts the time anew with every byte
// that a server sends.
class LoginDeadline {
  public:
    explicit LoginDeadline(int timeout) {
        constexpr int kMargin = 2;  // seconds, for the driver's own time-out
        if (timeout <= 0) return;
        ::signal(SIGALRM, endProcess);
        ::alarm(static_cast<unsigned int>(timeout) + kMargin);
    }
    ~LoginDeadline() { ::alarm(0); }
    LoginDeadline(const LoginDeadline&) = delete;
    LoginDeadline& operator=(const LoginDeadline&) = delete;

  private:
    static void endProcess(int) {
        constexpr char kText[] = "Sqlcmd: Error: Login timeout expired.\n";
        static_cast<void>(!::write(STDERR_FILENO, kText, sizeof kText - 1));
        ::_exit(1);
    }
};

// Completes the server's name by the port of the administrator connection of a named instance.
void addAdminPort(Options& options) {
    const ServerName server = parseServerName(options.server);
    if (server.port != 0 || server.instance.empty()) return;
    const std::optional<int> port = findAdminPort(server.host, server.instance);
    if (!port)
        throw ToolError("Sqlcmd: Error: '" + options.server +
                        "' does not report the port of its administrator connection. Give host,port.");
    options.server = server.host + "," + std::to_string(*port);
}

std::unique_ptr<Client> connectWithDriver(Options& options) {
    const LoginDeadline deadline(options.loginTimeout);
    const char* driver = std::getenv("SQLCMD_ODBC_DRIVER");
    if (driver != nullptr && *driver != '\0') return std::make_unique<OdbcClient>(options, driver);
    return std::make_unique<DbLibClient>(options);
}

// Changes the password by a login, since an expired one permits nothing else. DB-Library has no such login.
void changePassword(Options& options) {
    const LoginDeadline deadline(options.loginTimeout);
    const char* driver = std::getenv("SQLCMD_ODBC_DRIVER");
    Options login = options;
    login.password = options.newPassword;
    explicit_bzero(login.newPassword.data(), login.newPassword.size());
    const Connection connection(login, driver != nullptr && *driver != '\0' ? driver : kFreeTdsName,
                                std::move(options.password));
    options.password = std::exchange(options.newPassword, {});
}

// Without a message of the server, FreeTDS gives no reason. The port of an instance is not known.
void addReason(std::vector<Diagnostic>& errors, const Options& options) {
    const auto saysWhy = [](const Diagnostic& error) {
        return error.fromServer || error.driver != kFreeTdsName;
    };
    const ServerName server = serverOf(options);
    if (std::any_of(errors.begin(), errors.end(), saysWhy)) return;
    if (server.port == 0 && !server.instance.empty()) return;
    const std::string reason = hostlayer::reasonOfFailedLogin(probeTarget(server, options),
                                                              std::chrono::seconds(options.loginTimeout));
    if (reason.empty()) return;
    Diagnostic first;
    first.driver = "Sqlcmd";
    first.text = reason;
    errors.insert(errors.begin(), first);
}

// Another process was writing the first ticket of a client keytab: there is one by now. All other failures
// have a reason.
bool mayHaveMissedFirstTicket(const std::vector<Diagnostic>& errors, const Options& options) {
    const auto isUnexplained = [](const Diagnostic& error) {
        return !error.fromServer && error.driver == kFreeTdsName &&
               error.text.find("No Kerberos ticket") == std::string::npos;
    };
    return options.trusted && std::getenv("KRB5_CLIENT_KTNAME") != nullptr &&
           std::all_of(errors.begin(), errors.end(), isUnexplained);
}

}  // namespace

std::unique_ptr<Client> connect(Options& options) {
    if (options.adminConnection) addAdminPort(options);
    for (bool isFirst = true;; isFirst = false) {
        try {
            if (isFirst && !options.newPassword.empty()) changePassword(options);
            return connectWithDriver(options);
        } catch (LoginError& error) {
            addReason(error.diagnostics, options);
            if (!isFirst || !mayHaveMissedFirstTicket(error.diagnostics, options)) throw;
        }
    }
}

}  // namespace sqlcmd

#include "client/Connect.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include "client/DbLibClient.h"
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

}  // namespace

std::unique_ptr<Client> connect(Options& options) {
    if (options.adminConnection) addAdminPort(options);
    const LoginDeadline deadline(options.loginTimeout);
    const char* driver = std::getenv("SQLCMD_ODBC_DRIVER");
    if (driver != nullptr && *driver != '\0') return std::make_unique<OdbcClient>(options, driver);
    return std::make_unique<DbLibClient>(options);
}

}  // namespace sqlcmd

#include "client/Connect.h"

#include <cstdlib>

#include "client/DbLibClient.h"
#include "client/OdbcClient.h"
#include "client/ServerBrowser.h"
#include "options/ServerName.h"

namespace sqlcmd {
namespace {

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
    const char* driver = std::getenv("SQLCMD_ODBC_DRIVER");
    if (driver != nullptr && *driver != '\0') return std::make_unique<OdbcClient>(options, driver);
    return std::make_unique<DbLibClient>(options);
}

}  // namespace sqlcmd

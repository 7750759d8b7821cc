#include "client/Connect.h"

#include <algorithm>
#include <cstdlib>

#include "ServerProbe.h"
#include "client/DbLibClient.h"
#include "client/Encryption.h"
#include "client/OdbcClient.h"
#include "options/ServerName.h"

namespace sqlcmd {
namespace {

std::unique_ptr<Client> connectWithDriver(Options& options) {
    const char* driver = std::getenv("SQLCMD_ODBC_DRIVER");
    if (driver != nullptr && *driver != '\0') return std::make_unique<OdbcClient>(options, driver);
    return std::make_unique<DbLibClient>(options);
}

// Without a message of the server, FreeTDS gives no reason. The port of an instance is not known.
void addReason(std::vector<Diagnostic>& errors, const Options& options) {
    const auto saysWhy = [](const Diagnostic& error) {
        return error.fromServer || error.driver != kFreeTdsName;
    };
    const ServerName server = serverOf(options);
    if (std::any_of(errors.begin(), errors.end(), saysWhy)) return;
    if (server.port == 0 && !server.instance.empty()) return;
    const std::string reason = hostlayer::reasonOfFailedLogin(probeTarget(server, options));
    if (reason.empty()) return;
    Diagnostic first;
    first.driver = "Sqlcmd";
    first.text = reason;
    errors.insert(errors.begin(), first);
}

}  // namespace

std::unique_ptr<Client> connect(Options& options) {
    try {
        return connectWithDriver(options);
    } catch (LoginError& error) {
        addReason(error.diagnostics, options);
        throw;
    }
}

}  // namespace sqlcmd

#include "client/Connect.h"

#include <cstdlib>

#include "client/DbLibClient.h"
#include "client/OdbcClient.h"

namespace sqlcmd {

std::unique_ptr<Client> connect(Options& options) {
    const char* driver = std::getenv("SQLCMD_ODBC_DRIVER");
    if (driver != nullptr && *driver != '\0') return std::make_unique<OdbcClient>(options, driver);
    return std::make_unique<DbLibClient>(options);
}

}  // namespace sqlcmd

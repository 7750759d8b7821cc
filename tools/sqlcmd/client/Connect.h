// Choice of the client for a driver.
#pragma once

#include <memory>

#include "client/Client.h"
#include "options/Options.h"

namespace sqlcmd {

// Connects with the driver that the environment variable SQLCMD_ODBC_DRIVER names, FreeTDS without it.
// Changes the password first if `options` have a new one. Overwrites the passwords in `options`. Throws
// LoginError; ToolError and UsageError for invalid values.
std::unique_ptr<Client> connect(Options& options);

}  // namespace sqlcmd

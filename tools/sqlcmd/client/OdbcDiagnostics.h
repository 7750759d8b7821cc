// Reads the diagnostic records of an ODBC handle.
#pragma once

#include <vector>

#include "client/Diagnostic.h"
#include "client/Driver.h"

namespace sqlcmd {

// Returns the diagnostics of the last call on the handle.
std::vector<Diagnostic> diagnosticsOf(const DriverFunctions& functions, SQLSMALLINT handleType,
                                      SQLHANDLE handle);

}  // namespace sqlcmd

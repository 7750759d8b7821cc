// Direct queries on the server of a suite database.
#pragma once

#include <string>
#include <vector>

#include "DVUtilities/DBBase.h"

// Connects with the login of a suite database. Throws Failure with the diagnosis.
void connectToServer(DBBase& db, const std::string& account);
// Throws Failure (kScriptFailed) with the causes of the last operation.
[[noreturn]] void throwQueryFailure(const DBBase& db);
// Returns `what`, followed by the causes of the last operation that failed, one a line.
std::string withCauses(std::string what, const DBBase& db);

// Returns the rows of a query over the direct connection, each with `columns` strings; NULL is empty. Throws
// Failure (kScriptFailed) with SQL Server's message.
std::vector<std::vector<std::string>> rowsOf(DBBase& db, const std::string& sql, int columns);

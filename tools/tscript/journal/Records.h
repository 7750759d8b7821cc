// Access to the catalogue and the journal of a database.
#pragma once

#include <optional>
#include <string>

#include "DVUtilities/TScriptRecords.h"

// Opens the records of a database, by default the one of the installed components. Throws Failure with the
// diagnosis.
void openRecords(TScriptRecords& records, const std::string& database);
// Returns the run of that number; nothing if the journal has none. Throws Failure.
std::optional<TScriptRun_t> findRun(TScriptRecords& records, int id);
// Throws Failure with the error and the causes of the last call: kInstallation if SQL Server refused the
// statement, else kConnection.
[[noreturn]] void throwUnreadable(const TScriptRecords& records);

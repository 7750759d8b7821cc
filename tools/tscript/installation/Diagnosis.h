// Diagnosis of failed runs and connections: exit code, cause and advice.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "DVUtilities/Diagnostics.h"
#include "console/Outcome.h"
#include "installation/Installation.h"

struct Diagnosis {
    ExitCode code = ExitCode::kScriptFailed;
    std::string what;
    std::string advice;
    bool scriptRan = true;  // the output is then the script's

    Failure failure() const { return Failure(code, what, advice); }
};

// Diagnoses a failed run of `script` from the output string that the library returned. `database` is empty if
// none was chosen. Where the output leaves the cause open, it reads the package again or connects to the
// server.
Diagnosis diagnoseRun(const std::string& script, const std::string& database, const std::string& output);

// Finds out why a connection to a suite database failed: store, credentials, query tool, server or login. An
// empty name means Dorvas.
Diagnosis diagnoseDatabase(const std::string& database);

// Whether the database's connections use Windows authentication.
bool usesWindowsAuthentication(const SuiteDatabase& database);

// Logs in with the stored name and password, as backups do also with Windows authentication. Empty if that
// works. `db` has the database's settings.
std::optional<Diagnosis> diagnoseStoredLogin(DBBase& db, const SuiteDatabase& database);

// Fault of the server's name in the store. The query tool's command line does not quote it.
std::optional<Diagnosis> serverNameFault(const SuiteDatabase& database);

// Whether a query tool ended with exit code 0 without writing its output file. The library counts that as a
// success.
bool hasSilentTool(const std::vector<DVUCause_t>& causes);
Diagnosis silentTool();

// Whether reading the query tool's output failed in a run that the library counts as a success.
bool hasCutOutput(const std::vector<DVUCause_t>& causes);
Diagnosis cutOutput();

void requireQueryTool();  // throws Failure (kInstallation) if it is not executable

// Cause behind the error text of EncryptFile() or DecryptFile().
std::string explainCipherError(const std::string& errorText);

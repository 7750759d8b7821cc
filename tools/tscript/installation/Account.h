// Connections to the suite's databases with the settings of the store.
#pragma once

#include <optional>
#include <string>

#include "DVUtilities/DBBase.h"
#include "installation/Installation.h"

struct HostNames {
    std::string machine;
    std::string instance;
};

// Names of this host and its instance; empty if the store does not have them.
std::optional<HostNames> configuredHost();

// Reads the settings of a database into `db` and probes the connection. On failure db.getErrorMsg() has the
// reason, unless the store does not name this host.
bool openAccount(DBBase& db, const SuiteDatabase& database);

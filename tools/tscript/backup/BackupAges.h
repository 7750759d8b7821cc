// Ages of the newest backups of a server's user databases.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "DVUtilities/DBBase.h"
#include "console/MetricsText.h"

struct BackupAge {
    std::string database;
    std::optional<std::int64_t> seconds{};  // since the end of its newest full backup; nothing: there is none
    std::string finish{};                   // that end, in the server's local time
};

// By name, without the system databases and snapshots. Throws Failure (kScriptFailed).
std::vector<BackupAge> backupAges(DBBase& db);

// `now` in seconds since 1970.
void addBackupMetrics(MetricsText& metrics, const std::vector<BackupAge>& ages, std::int64_t now);

#include "backup/BackupAges.h"

#include <cstdlib>

#include "installation/ServerQuery.h"

namespace {

// Minutes, because DATEDIFF() overflows after 68 years of seconds.
constexpr const char* kAges =
    "SELECT d.name, CONVERT(varchar(12), DATEDIFF(minute, MAX(b.backup_finish_date), GETDATE())), "
    "CONVERT(varchar(19), MAX(b.backup_finish_date), 120) FROM master.sys.databases d "
    "LEFT JOIN msdb.dbo.backupset b ON b.database_name = d.name AND b.type = 'D' "
    "WHERE d.name NOT IN ('master', 'tempdb', 'model', 'msdb') AND d.source_database_id IS NULL "
    "GROUP BY d.name ORDER BY d.name";
constexpr std::int64_t kMinute = 60;

}  // namespace

std::vector<BackupAge> backupAges(DBBase& db) {
    std::vector<BackupAge> ages;
    for (const auto& row : rowsOf(db, kAges, 3)) {
        BackupAge age{.database = row[0]};
        if (!row[2].empty()) {
            age.seconds = std::strtoll(row[1].c_str(), nullptr, 10) * kMinute;
            age.finish = row[2];
        }
        ages.push_back(std::move(age));
    }
    return ages;
}

void addBackupMetrics(MetricsText& metrics, const std::vector<BackupAge>& ages, std::int64_t now) {
    metrics.add("tscript_backup_last_timestamp_seconds", "gauge",
                "End of the newest full backup of a database; 0 if there is none.");
    for (const BackupAge& age : ages)
        metrics.sample(age.seconds ? static_cast<double>(now - *age.seconds) : 0.0,
                       {{"database", age.database}});
}

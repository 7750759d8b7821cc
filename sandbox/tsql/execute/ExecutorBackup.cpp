// BACKUP, RESTORE and what they report.
#include <cstdio>

#include "execute/Executor.h"

namespace tsql {

namespace {

// What RESTORE FILELISTONLY and HEADERONLY show of a backup. ?1 is the database's name, ?2 the file of its
// data, ?3 its size, ?4 and ?5 name and description of the backup, ?6 and ?7 its start and end.
constexpr std::string_view kFileList =
    R"(LogicalName nvarchar(128) = column1; PhysicalName nvarchar(260) = column2; Type char(1) = column3; FileGroupName
nvarchar(128) = column4; Size numeric(20) = column5; MaxSize numeric(20) = 35184372080640; FileId bigint = column6;
CreateLSN numeric(25) = 0; DropLSN numeric(25) = 0; UniqueId uniqueidentifier = NULL; ReadOnlyLSN numeric(25) = 0;
ReadWriteLSN numeric(25) = 0; BackupSizeInBytes bigint = column5; SourceBlockSize int = 4096; FileGroupId int = column6;
LogGroupGUID uniqueidentifier = NULL; DifferentialBaseLSN numeric(25) = 0; DifferentialBaseGUID uniqueidentifier = NULL;
IsReadOnly bit = 0; IsPresent bit = 1; TDEThumbprint varbinary(32) = NULL; SnapshotUrl nvarchar(360) = NULL)";
constexpr std::string_view kFiles =
    "(VALUES (?1, ?2, 'D', 'PRIMARY', ?3, 1), (?1 || '_log', ?2 || '-wal', 'L', NULL, 0, 2))";
constexpr std::string_view kHeader =
    R"(BackupName nvarchar(128) = nullif(?4, ''); BackupDescription nvarchar(255) = nullif(?5, ''); BackupType smallint
= 1; ExpirationDate datetime = NULL; Compressed bit = 0; Position smallint = 1; DeviceType tinyint = 2; UserName
nvarchar(128) = NULL; ServerName nvarchar(128) = NULL; DatabaseName nvarchar(128) = ?1; DatabaseVersion int = 0;
DatabaseCreationDate datetime = NULL; BackupSize numeric(20) = ?3; FirstLSN numeric(25) = 0; LastLSN numeric(25) = 0;
CheckpointLSN numeric(25) = 0; DatabaseBackupLSN numeric(25) = 0; BackupStartDate datetime = ?6; BackupFinishDate
datetime = ?7; SortOrder smallint = 0; CodePage smallint = 0; UnicodeLocaleId int = 0; UnicodeComparisonStyle int = 0;
CompatibilityLevel tinyint = 150; SoftwareVendorId int = 0; SoftwareVersionMajor int = 15; SoftwareVersionMinor int = 0;
SoftwareVersionBuild int = 2000; MachineName nvarchar(128) = NULL; Flags int = 0; BindingID uniqueidentifier = NULL;
RecoveryForkID uniqueidentifier = NULL; Collation nvarchar(128) = 'SQL_Latin1_General_CP1_CI_AS'; FamilyGUID
uniqueidentifier = NULL; HasBulkLoggedData bit = 0; IsSnapshot bit = 0; IsReadOnly bit = 0; IsSingleUser bit = 0;
HasBackupChecksums bit = 1; IsDamaged bit = 0; BeginsLogChain bit = 0; HasIncompleteMetaData bit = 0; IsForceOffline bit
= 0; IsCopyOnly bit = 0; FirstRecoveryForkID uniqueidentifier = NULL; ForkPointLSN numeric(25) = NULL; RecoveryModel
nvarchar(60) = 'SIMPLE'; DifferentialBaseLSN numeric(25) = NULL; DifferentialBaseGUID uniqueidentifier = NULL;
BackupTypeDescription nvarchar(60) = 'Database'; BackupSetGUID uniqueidentifier = NULL; CompressedBackupSize bigint =
?3; Containment tinyint = 0; KeyAlgorithm nvarchar(32) = NULL; EncryptorThumbprint varbinary(20) = NULL; EncryptorType
nvarchar(32) = NULL)";

}  // namespace

// Reports "10 percent processed." at the interval of STATS, and ends the work of a cancelled batch.
Progress Executor::progress(const Options& options) {
    constexpr int kUsual = 10;
    const auto stats = options.find("STATS =");
    const int asked =
        stats == options.end() ? options.contains("STATS") * kUsual : evaluateInteger(*stats->second);
    return [this, step = std::min(asked, 100), reported = 0](int percent) mutable {
        if (isCancelled()) throw BatchEnd{};
        while (step > 0 && reported < 100 && std::min(reported + step, 100) <= percent)
            inform(kPercentProcessed, {std::to_string(reported = std::min(reported + step, 100))});
    };
}

// An error in `work` is followed by error 3013, which names the statement.
void Executor::runMedia(std::string_view verb, const std::function<void()>& work) {
    failingAs(sqlError(kBackupTerminated, {verb}), [&] {
        if (m_transactions > 0) throw sqlError(kBackupWithinTransaction);
        work();
    });
}

void Executor::informDone(std::string_view verb, const BackupHeader& header, std::string_view database,
                          std::chrono::steady_clock::time_point start) const {
    const double seconds =
        std::max(0.001, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    constexpr double kMegabyte = 1024.0 * 1024.0;
    char speed[80];
    std::snprintf(speed, sizeof speed, "%.3f seconds (%.3f MB/sec)", seconds,
                  static_cast<double>(header.bytes) / kMegabyte / seconds);
    const std::string pages = std::to_string(header.pages());
    inform(kPagesProcessed, {pages, database, header.database});
    inform(kBackupProcessed, {verb, pages, speed});
}

void Executor::run(const Backup& backup) {
    runMedia("BACKUP DATABASE", [&] {
        const auto start = std::chrono::steady_clock::now();
        const std::string file = evaluateText(*backup.file);
        if (!m_storage.isBackupPlace(file))
            throw sqlError(kBackupDeviceNotOpened,
                           {file, "13", "not in the data folder or a --backup-folder"});
        const auto given = [&](std::string_view option) {
            const auto found = backup.options.find(option);
            return found == backup.options.end() ? std::string() : evaluateText(*found->second);
        };
        const BackupHeader header =
            backupDatabase(m_storage, evaluateText(*backup.database), file, progress(backup.options),
                           given("NAME ="), given("DESCRIPTION ="));
        beforeWrite();
        m_connection.run("INSERT INTO " + m_connection.attach("msdb") +
                             ".backupset (name, database_name, backup_start_date, backup_finish_date, type, "
                             "backup_size) VALUES (nullif(?1, ''), ?2, ?3, ?4, 'D', ?5)",
                         {header.name, header.database, header.started, header.finished, header.bytes});
        informDone("BACKUP", header, header.database, start);
    });
}

Flow Executor::run(const Restore& restore) {
    const bool verifies = restore.what == "VERIFYONLY", listsFiles = restore.what == "FILELISTONLY";
    std::optional<BackupHeader> header;
    const auto work = [&] {
        const std::string file = evaluateText(*restore.file);
        if (verifies) {
            verifyBackup(file, progress());
            inform(kBackupSetValid);
        } else if (restore.what == "DATABASE") {
            restoreFrom(file, restore);
        } else {
            header = readBackupHeader(file, progress());
        }
    };
    runMedia(verifies     ? "VERIFY DATABASE"
             : listsFiles ? "RESTORE FILELIST"
                          : "RESTORE " + std::string(restore.what),
             work);
    if (!header) return finished();
    const SystemView view = listsFiles ? queryOf(kFileList, kFiles) : queryOf(kHeader, "(VALUES (0))");
    const Value values[] = {header->database,    header->dataFile, header->bytes,   header->name,
                            header->description, header->started,  header->finished};
    PreparedStatement statement(m_connection, view.sql, values);
    const std::vector<Column> columns(view.columns.begin(), view.columns.end());
    return finished(sendRows(statement, columns), StatementKind::Select);
}

void Executor::restoreFrom(const std::string& file, const Restore& restore) {
    const auto start = std::chrono::steady_clock::now();
    const std::string name = evaluateText(*restore.database);
    std::vector<std::string> moved;
    for (auto [move, last] = restore.options.equal_range("MOVE"); move != last; ++move)
        moved.push_back(evaluateText(*move->second));
    if (databaseKey(name) == databaseKey(m_database)) throw sqlError(kRestoreOfOwnDatabase, {name});
    if (m_storage.exists(name)) releaseDatabase(name, sqlError(kNoExclusiveAccess));
    try {
        const BackupHeader header = restoreDatabase(
            m_storage, file, name, restore.options.contains("REPLACE"), moved, progress(restore.options));
        informDone("RESTORE", header, name, start);
    } catch (const SqlError& error) {
        if (error.number != kFileInUse) throw;
        const BackupHeader header = readBackupHeader(file);
        for (const auto& [own, path] : {std::pair(header.database, header.dataFile),
                                        std::pair(header.logName(), header.dataFile + "-wal")}) {
            if (m_tries > 0) break;
            inform(kFileInUse, {path, header.database});
            inform(kFileCannotBeRestored, {own, path});
        }
        throw sqlError(kRestorePlanningFailed);
    }
}

}  // namespace tsql

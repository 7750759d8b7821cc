// BACKUP, RESTORE and what they report.
#include <cstdio>
#include <sstream>

#include "execute/Executor.h"

namespace tsql {

namespace {

// What RESTORE FILELISTONLY and HEADERONLY show of a backup.
struct BackupReport {
    std::vector<Column> columns;
    std::vector<std::vector<Value>> rows;
};

// columns: the name and type of each column, and its value. "?" is the next value of the row; without a value
// the column is 0 or NULL.
BackupReport reportOf(std::string_view columns, const std::vector<std::vector<Value>>& rows) {
    BackupReport report{{}, std::vector<std::vector<Value>>(rows.size())};
    std::size_t next = 0;
    for (const std::string& item : listItems(columns)) {
        std::istringstream words(item);
        std::string name, type, value;
        words >> name >> type >> value;
        const SqlType is = report.columns.emplace_back(Column{name, parseType(type)}).type;
        if (value.empty()) value = isNumber(is.id) ? "0" : "NULL";
        for (std::size_t i = 0; i < rows.size(); ++i)
            report.rows[i].push_back(value == "?"      ? rows[i][next]
                                     : value == "NULL" ? Value(Null{})
                                                       : convertValue(value, varcharType(SqlType::kMax), is));
        next += value == "?";
    }
    return report;
}

BackupReport fileListOf(const BackupHeader& header) {
    constexpr std::string_view kColumns =
        R"(LogicalName nvarchar(128) ?; PhysicalName nvarchar(260) ?; Type char(1) ?; FileGroupName nvarchar(128) ?;
Size numeric(20) ?; MaxSize numeric(20) 35184372080640; FileId bigint ?; CreateLSN numeric(25); DropLSN
numeric(25); UniqueId uniqueidentifier; ReadOnlyLSN numeric(25); ReadWriteLSN numeric(25); BackupSizeInBytes
bigint ?; SourceBlockSize int 4096; FileGroupId int ?; LogGroupGUID uniqueidentifier; DifferentialBaseLSN
numeric(25); DifferentialBaseGUID uniqueidentifier; IsReadOnly bit; IsPresent bit 1; TDEThumbprint varbinary(32); SnapshotUrl nvarchar(360))";
    const Value none = std::int64_t{0}, first = std::int64_t{1}, second = std::int64_t{2};
    return reportOf(
        kColumns,
        {{header.database, header.dataFile, "D", "PRIMARY", header.bytes, first, header.bytes, first},
         {header.logName(), header.dataFile + "-wal", "L", Null{}, none, second, none, none}});
}

BackupReport headerOf(const BackupHeader& header) {
    constexpr std::string_view kColumns =
        R"(BackupName nvarchar(128) ?; BackupDescription nvarchar(255) ?; BackupType smallint 1; ExpirationDate
datetime; Compressed bit; Position smallint 1; DeviceType tinyint 2; UserName nvarchar(128); ServerName
nvarchar(128); DatabaseName nvarchar(128) ?; DatabaseVersion int; DatabaseCreationDate datetime; BackupSize
numeric(20) ?; FirstLSN numeric(25); LastLSN numeric(25); CheckpointLSN numeric(25); DatabaseBackupLSN
numeric(25); BackupStartDate datetime ?; BackupFinishDate datetime ?; SortOrder smallint; CodePage smallint;
UnicodeLocaleId int; UnicodeComparisonStyle int; CompatibilityLevel tinyint 150; SoftwareVendorId int;
SoftwareVersionMajor int 15; SoftwareVersionMinor int; SoftwareVersionBuild int 2000; MachineName
nvarchar(128); Flags int; BindingID uniqueidentifier; RecoveryForkID uniqueidentifier; Collation
nvarchar(128) SQL_Latin1_General_CP1_CI_AS; FamilyGUID uniqueidentifier; HasBulkLoggedData bit; IsSnapshot
bit; IsReadOnly bit; IsSingleUser bit; HasBackupChecksums bit 1; IsDamaged bit; BeginsLogChain bit;
HasIncompleteMetaData bit; IsForceOffline bit; IsCopyOnly bit; FirstRecoveryForkID uniqueidentifier;
ForkPointLSN numeric(25) NULL; RecoveryModel nvarchar(60) SIMPLE; DifferentialBaseLSN numeric(25) NULL;
DifferentialBaseGUID uniqueidentifier; BackupTypeDescription nvarchar(60) Database; BackupSetGUID
uniqueidentifier; CompressedBackupSize bigint ?; Containment tinyint; KeyAlgorithm nvarchar(32);
EncryptorThumbprint varbinary(20); EncryptorType nvarchar(32))";
    const auto given = [](const std::string& text) { return text.empty() ? Value(Null{}) : Value(text); };
    return reportOf(kColumns, {{given(header.name), given(header.description), header.database, header.bytes,
                                header.started, header.finished, header.bytes}});
}

}  // namespace

// Reports "10 percent processed." at the interval of STATS, and ends the work of a cancelled batch.
Progress Executor::progress(std::int64_t step) const {
    return [this, step, reported = std::int64_t{0}](int percent) mutable {
        if (isCancelled()) throw BatchEnd{};
        while (step > 0 && reported < 100 && std::min<std::int64_t>(reported + step, 100) <= percent)
            inform(kPercentProcessed,
                   {std::to_string(reported = std::min<std::int64_t>(reported + step, 100))});
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
        const auto given = [&](const ExprPtr& text) { return text ? evaluateText(*text) : std::string(); };
        const BackupHeader header =
            backupDatabase(m_storage, evaluateText(*backup.database), file, progress(backup.stats),
                           given(backup.name), given(backup.description));
        beforeWrite();
        m_connection.run("INSERT INTO " + m_connection.attach("msdb") +
                             ".backupset (name, database_name, backup_start_date, backup_finish_date, type, "
                             "backup_size) VALUES (nullif(?1, ''), ?2, ?3, ?4, 'D', ?5)",
                         {header.name, header.database, header.started, header.finished, header.bytes});
        informDone("BACKUP", header, header.database, start);
    });
}

Flow Executor::run(const Restore& restore) {
    constexpr const char* kVerbs[] = {"RESTORE DATABASE", "RESTORE FILELIST", "RESTORE HEADERONLY",
                                      "VERIFY DATABASE"};
    std::optional<BackupReport> report;
    runMedia(kVerbs[static_cast<int>(restore.kind)], [&] {
        const std::string file = evaluateText(*restore.file);
        if (restore.kind == RestoreKind::Verify) {
            verifyBackup(file, progress(0));
            inform(kBackupSetValid);
        } else if (restore.kind == RestoreKind::Database) {
            restoreFrom(file, restore);
        } else {
            const BackupHeader header = readBackupHeader(file, progress(0));
            report = restore.kind == RestoreKind::FileList ? fileListOf(header) : headerOf(header);
        }
    });
    return report ? sendTable(report->columns, report->rows) : finished();
}

void Executor::restoreFrom(const std::string& file, const Restore& restore) {
    const auto start = std::chrono::steady_clock::now();
    const std::string name = evaluateText(*restore.database);
    std::vector<std::string> moved;
    for (const auto& each : restore.moved) moved.push_back(evaluateText(*each));
    if (databaseKey(name) == databaseKey(m_database)) throw sqlError(kRestoreOfOwnDatabase, {name});
    if (m_storage.exists(name)) releaseDatabase(name, sqlError(kNoExclusiveAccess));
    try {
        const BackupHeader header =
            restoreDatabase(m_storage, file, name, restore.replace, moved, progress(restore.stats));
        informDone("RESTORE", header, name, start);
    } catch (const SqlError& error) {
        if (error.number != kFileInUse) throw;
        const BackupHeader header = readBackupHeader(file);
        for (const auto& row : fileListOf(header).rows) {
            if (m_tries > 0) break;
            const auto &own = std::get<std::string>(row[0]), &path = std::get<std::string>(row[1]);
            inform(kFileInUse, {path, header.database});
            inform(kFileCannotBeRestored, {own, path});
        }
        throw sqlError(kRestorePlanningFailed);
    }
}

}  // namespace tsql

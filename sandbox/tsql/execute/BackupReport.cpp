#include "execute/BackupReport.h"

#include <map>
#include <sstream>

#include "syntax/Parser.h"
#include "types/Text.h"

namespace tsql {

namespace {

// columns: the name and type of each column, and the value it has where a row gives none. Without that value
// it is 0 or NULL.
BackupReport reportOf(std::string_view columns, const std::vector<std::map<std::string_view, Value>>& rows) {
    BackupReport report;
    report.rows.resize(rows.size());
    for (const std::string& item : listItems(columns)) {
        std::istringstream words(item);
        std::string name, type, usual;
        words >> name >> type >> usual;
        const SqlType is = report.columns.emplace_back(Column{name, parseType(type)}).type;
        if (usual.empty()) usual = isNumber(is.id) ? "0" : "NULL";
        const Value value =
            usual == "NULL" ? Value(Null{}) : convertValue(usual, varcharType(SqlType::kMax), is);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto given = rows[i].find(name);
            report.rows[i].push_back(given == rows[i].end() ? value : given->second);
        }
    }
    return report;
}

}  // namespace

BackupReport fileListOf(const BackupHeader& header) {
    constexpr std::string_view kColumns =
        R"(LogicalName nvarchar(128); PhysicalName nvarchar(260); Type char(1); FileGroupName nvarchar(128);
Size numeric(20); MaxSize numeric(20) 35184372080640; FileId bigint; CreateLSN numeric(25); DropLSN
numeric(25); UniqueId uniqueidentifier; ReadOnlyLSN numeric(25); ReadWriteLSN numeric(25); BackupSizeInBytes
bigint; SourceBlockSize int 4096; FileGroupId int; LogGroupGUID uniqueidentifier; DifferentialBaseLSN
numeric(25); DifferentialBaseGUID uniqueidentifier; IsReadOnly bit; IsPresent bit 1; TDEThumbprint varbinary(32); SnapshotUrl nvarchar(360))";
    return reportOf(kColumns, {{{"LogicalName", header.database},
                                {"PhysicalName", header.dataFile},
                                {"Type", std::string("D")},
                                {"FileGroupName", std::string("PRIMARY")},
                                {"Size", header.bytes},
                                {"FileId", std::int64_t{1}},
                                {"BackupSizeInBytes", header.bytes},
                                {"FileGroupId", std::int64_t{1}}},
                               {{"LogicalName", header.logName()},
                                {"PhysicalName", header.dataFile + "-wal"},
                                {"Type", std::string("L")},
                                {"FileId", std::int64_t{2}}}});
}

BackupReport headerOf(const BackupHeader& header) {
    constexpr std::string_view kColumns =
        R"(BackupName nvarchar(128); BackupDescription nvarchar(255); BackupType smallint 1; ExpirationDate
datetime; Compressed bit; Position smallint 1; DeviceType tinyint 2; UserName nvarchar(128); ServerName
nvarchar(128); DatabaseName nvarchar(128); DatabaseVersion int; DatabaseCreationDate datetime; BackupSize
numeric(20); FirstLSN numeric(25); LastLSN numeric(25); CheckpointLSN numeric(25); DatabaseBackupLSN
numeric(25); BackupStartDate datetime; BackupFinishDate datetime; SortOrder smallint; CodePage smallint;
UnicodeLocaleId int; UnicodeComparisonStyle int; CompatibilityLevel tinyint 150; SoftwareVendorId int;
SoftwareVersionMajor int 15; SoftwareVersionMinor int; SoftwareVersionBuild int 2000; MachineName
nvarchar(128); Flags int; BindingID uniqueidentifier; RecoveryForkID uniqueidentifier; Collation
nvarchar(128) SQL_Latin1_General_CP1_CI_AS; FamilyGUID uniqueidentifier; HasBulkLoggedData bit; IsSnapshot
bit; IsReadOnly bit; IsSingleUser bit; HasBackupChecksums bit 1; IsDamaged bit; BeginsLogChain bit;
HasIncompleteMetaData bit; IsForceOffline bit; IsCopyOnly bit; FirstRecoveryForkID uniqueidentifier;
ForkPointLSN numeric(25) NULL; RecoveryModel nvarchar(60) SIMPLE; DifferentialBaseLSN numeric(25) NULL;
DifferentialBaseGUID uniqueidentifier; BackupTypeDescription nvarchar(60) Database; BackupSetGUID
uniqueidentifier; CompressedBackupSize bigint; Containment tinyint; KeyAlgorithm nvarchar(32);
EncryptorThumbprint varbinary(20); EncryptorType nvarchar(32))";
    const auto given = [](const std::string& text) { return text.empty() ? Value(Null{}) : Value(text); };
    return reportOf(kColumns, {{{"BackupName", given(header.name)},
                                {"BackupDescription", given(header.description)},
                                {"CompressedBackupSize", header.bytes},
                                {"DatabaseName", header.database},
                                {"BackupSize", header.bytes},
                                {"BackupStartDate", header.started},
                                {"BackupFinishDate", header.finished}}});
}

}  // namespace tsql

// The statements of server maintenance, to the letter: tabs, line ends and trailing blanks are sent as well.
// Names and paths are put in as they are; nothing is escaped.
#pragma once

namespace maintenance_sql {

inline constexpr char kDatabase[] = "MASTER";  // where all of them run

inline constexpr char kDatabaseList[] =
    "SELECT name FROM master..sysdatabases WHERE name NOT IN ('master', 'tempdb', 'model', 'msdb', "
    "'Northwind', "
    "'pubs')";
inline constexpr char kBackup[] = "BACKUP DATABASE %s \t\t\t\t\t\t\n TO DISK = '%s' ";
inline constexpr char kFileList[] = "RESTORE FILELISTONLY FROM DISK = '%s'";
inline constexpr char kRestore[] = "RESTORE DATABASE %s FROM DISK = '%s' WITH RECOVERY, REPLACE, ";
inline constexpr char kMoveFile[] = " MOVE '%s' TO '%s%s', ";  // logical name, directory, logical name
// The date is one word (style 113 with "-" for its blanks), so that a row parses into two fields.
inline constexpr char kLastBackup[] =
    "select convert(varchar(10), datediff(dd, max(backup_start_date), getdate())) as 'Days', \t\t\t\t\t\n "
    "convert(varchar(20), replace(convert(varchar(20), max(backup_start_date), 113), ' ', '-')) as "
    "'Datetime'\t\t\t\t\t\n from msdb..backupset \t\t\t\t\t\n where upper(database_name) = upper('%s') "
    "\t\t\t\t\t\n "
    "and type = 'D' ";
inline constexpr char kProductVersion[] =
    "SELECT SUBSTRING(CONVERT(varchar, SERVERPROPERTY('ProductVersion')), 1, CHARINDEX('.', CONVERT(varchar, "
    "SERVERPROPERTY('ProductVersion')))-1)";

}  // namespace maintenance_sql

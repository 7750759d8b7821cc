// Statements of server maintenance. They are sent as they are, tabs, line breaks and trailing blanks
// included. Names and paths are inserted without escaping.
#pragma once

namespace maintenance_sql {

inline constexpr char kDatabase[] = "MASTER";  // the database in which all of them run

inline constexpr char kDatabaseList[] =
    "SELECT name FROM master..sysdatabases WHERE name NOT IN ('master', 'tempdb', 'model', 'msdb', "
    "'Northwind', "
    "'pubs')";
inline constexpr char kBackup[] = "BACKUP DATABASE %s \t\t\t\t\t\t\n TO DISK = '%s' ";
inline constexpr char kFileList[] = "RESTORE FILELISTONLY FROM DISK = '%s'";
inline constexpr char kRestore[] = "RESTORE DATABASE %s FROM DISK = '%s' WITH RECOVERY, REPLACE, ";
inline constexpr char kMoveFile[] = " MOVE '%s' TO '%s%s', ";  // logical name, directory, logical name
// The date (style 113) has "-" in place of blanks, so that a row is parsed into two fields.
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

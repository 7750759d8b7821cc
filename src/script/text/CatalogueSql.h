// Statements on the script catalogue and the journal. Times are seconds since 1970; the database converts
// them.
#pragma once

namespace catalogue_sql {

// `ZpTscripts` and `ZpTscriptExec` in the script's database.
inline constexpr char kFindScript[] =  // name, type mask
    "SELECT TOP 1 id, auditLevel, name FROM ZpTscripts WHERE name = '%s' and type & %d > 0 ORDER BY id DESC";
inline constexpr char kScriptType[] = "SELECT type FROM ZpTscripts WHERE id = %d";
inline constexpr char kInsertScript[] =  // type, name, audit level, creation time, usage
    "SET NOCOUNT ON  INSERT ZpTscripts VALUES (%d, '%s', %d, dbo.GetDateTime(%lld), '%s')  SELECT @@IDENTITY";
inline constexpr char kUpdateUsage[] = "SET NOCOUNT ON  UPDATE ZpTscripts SET usage = '%s' WHERE id = %d";
inline constexpr char kRecordStart[] =  // start time, end time, parameters, user, script
    " SET NOCOUNT ON  INSERT ZpTscriptExec  (tsId, type, name, timeStart, timeEnd, status, inputParams, "
    "userId)"
    "  SELECT id, type, name, dbo.GetDateTime(%lld), dbo.GetDateTime(%lld), 0, '%s', %d"
    "  FROM   ZpTscripts WHERE id = %d  SELECT @@IDENTITY ";
inline constexpr char kStartSource[] = "FROM   ZpTscripts";  // of kRecordStart, followed by its condition
inline constexpr char kStartId[] = "SELECT @@IDENTITY";
inline constexpr char kRecordEnd[] =  // end time, status, run
    " SET NOCOUNT ON  UPDATE ZpTscriptExec  SET timeEnd = dbo.GetDateTime(%lld),  status = %d WHERE id = %d ";

// Lists, newest first. The conditions include " WHERE" or are empty.
inline constexpr char kListScripts[] =  // page length, conditions
    "SELECT TOP %d id, type, auditLevel, CONVERT(varchar(19), creationTime, 120), name FROM ZpTscripts%s "
    "ORDER BY id DESC";
inline constexpr int kScriptColumns = 5;
inline constexpr char kListRuns[] =  // earliest start, page length, conditions
    "SET NOCOUNT ON  DECLARE @since datetime  SET @since = dbo.GetDateTime(%lld)  "
    "SELECT TOP %d id, tsId, type, status, userId, CONVERT(varchar(19), timeStart, 120), "
    "CONVERT(varchar(19), timeEnd, 120), name, LEFT(inputParams, 1000) FROM ZpTscriptExec%s ORDER BY id DESC";
inline constexpr int kRunColumns = 9;
inline constexpr char kTimeAs[] = "SELECT CONVERT(varchar(19), dbo.GetDateTime(%lld), 120)";

// Text of a procedure. No row without the right to see it.
inline constexpr char kDefinition[] =  // name
    "SELECT definition FROM sys.sql_modules WHERE object_id = OBJECT_ID('%s')";

// Site and installation that a package may be bound to.
inline constexpr char kSiteNumber[] = "SELECT number FROM dorvas..app_plexum WHERE id = 2";
inline constexpr char kInstallationGuid[] =
    "SELECT SettingValue FROM NQSetting WHERE SettingName = 'NQ2_DATABASE_ID'";

// Bits of the column `type`.
inline constexpr int kPermanent = 2;
inline constexpr int kSecured = 8;
inline constexpr int kFromPackage = 100;  // 4, 32 and 64

}  // namespace catalogue_sql

// Messages of the database subsystem, for error text, log files and debug log. Callers rely on spelling and
// line tags.
#pragma once

namespace database_messages {

// ---- Account discovery ---------------------------------------------------------------------------------
inline constexpr char kOnlyOnManagementServer[] = "This program can be run only on the Dorvase.";
inline constexpr char kInvalidDatabase[] = "Invalid db name [%s]. %s";
inline constexpr char kNoServerName[] = "Unable to get SQL Server name from the registry";
inline constexpr char kNoDatabaseUser[] = "GetDBUser failed for database [%s]";
inline constexpr char kCredentialsNotRead[] = "Failed to decrypt username/password";
inline constexpr char kConnected[] = "Successfully connected to database [%s] _DSN[%s].";

// ---- Query tool ----------------------------------------------------------------------------------------
inline constexpr char kScriptFailed[] = "Failed to execute SQL Script!";
inline constexpr char kStringScriptFailed[] = "Failed to execute SQL Script";  // RunStringQuery()
inline constexpr char kToolPath[] = "Using sqlExePath : %s";
inline constexpr char kOutputNotOpened[] = "Unable to open file: %s !";

// ---- Server maintenance --------------------------------------------------------------------------------
inline constexpr char kQueryFailed[] = "Failed to execute DB query [%s].";
inline constexpr char kResultNotParsed[] = "Failed to parse resultset for DB query [%s].";
inline constexpr char kBackedUp[] = "Backed-Up the Database [%s] as %s.";
inline constexpr char kRestoreFailed[] = "Failed to execute Database Restore Command [%s].";
inline constexpr char kRestored[] = "Successfully restored the Database dump [%s].";
inline constexpr char kLastBackup[] = "Last backup of database[%s] taken on %s. Days since last backup [%s].";

// ---- Causes --------------------------------------------------------------------------------------------
inline constexpr char kUnknownDatabase[] = "The configuration has no values for a database [%s].";
inline constexpr char kCredentialsUnusable[] =
    "The credentials cannot be decrypted, or their plain text has no length of the user name in front.";
inline constexpr char kQuoteInArgument[] =
    "A double quote in %s would end an argument of the query tool. It was not started.";
inline constexpr char kNotOpen[] = "The connection is not open.";
inline constexpr char kStatementFailed[] = "The statement failed. The platform layer gives no reason.";
inline constexpr char kNothingWritten[] =
    "The query tool ended with exit code 0, but did not write its output file %s. Is it sqlcmd?";
inline constexpr char kOutputNotOwn[] =
    "The temporary output file is a link, belongs to another user or is no regular file with one name. "
    "Delete it.";
inline constexpr char kNoRow[] = "The statement returned no row.";
inline constexpr char kFailureValue[] = "The value -1 counts as a failure.";
inline constexpr char kExitCode[] = "The query tool ended with exit code %d.";

namespace debug {
inline constexpr int kTrace = 3;  // level
inline constexpr char kGetAccount[] =
    "DBBase(84): -Debug-: Get account information with arguments - Machine Name [%s], Control set name [%s], "
    "log file [%s], database name [%s].";
inline constexpr char kWindowsAuthentication[] =
    "DBBase(190): -Debug-: SQL authentication for connection is [DISABLED].";
inline constexpr char kOpen[] = "DBBase(250): -Debug-: Data source [%s], user name [%s].";
inline constexpr char kGetUser[] =
    "DBBase(1192): -Debug-: Get database user with inputs control set name [%s], database [%s].";
inline constexpr char kOpenFailed[] = "VTSimpleDBConn Open failed.";
inline constexpr char kStartFailed[] = "Start process failed, Error[%s]";
inline constexpr char kWaitFailed[] = "Wait for process to end failed, Error[%s]";
inline constexpr char kProcessFailed[] = "Process returned error, Code[%d], Error[%s]";
}  // namespace debug

}  // namespace database_messages

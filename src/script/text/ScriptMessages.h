// Messages of a script run and their formats. Callers rely on the exact text, misspellings and trailing
// blanks included.
#pragma once

namespace messages {

// ---- Session -------------------------------------------------------------------------------------------
inline constexpr char kEmptyScriptName[] = "Empty script name! ";
inline constexpr char kNoMachineName[] = "Failed to get machine name. ";
inline constexpr char kInitialized[] = "Intialized.";
inline constexpr char kNoSession[] =
    "The script session is not initialized. Call initialize with the script's name first.";
inline constexpr char kBrokenOff[] =
    "The operation was stopped, most likely for lack of memory. Free memory, or shorten the script or its "
    "output, and run it again.";
inline constexpr char kSeveralDatabases[] = "Please provide database name because multiple databases exist.";
inline constexpr char kInvalidDatabase[] = "Invalid db name [%s] passed to DV.";
inline constexpr char kNoAccess[] = "Failed to get database access info.";
inline constexpr char kConnected[] = "Database is connected for vm [%s], controlset [%s], dbName [%s]";
inline constexpr char kNotPermanent[] = "This is not a permanent tscript.";

// ---- Catalogue -----------------------------------------------------------------------------------------
inline constexpr char kNoSiteNumber[] = "Failed to get plexum number from dorvas database.";
inline constexpr char kOtherSite[] = "This site specific tscript cannot be run on this DV: [%X].";
inline constexpr char kNoGuid[] = "Failed to get GUID from NQSetting table.";
inline constexpr char kGuidRowMissing[] = "NQSetting has no row with the name NQ2_DATABASE_ID.";
inline constexpr char kOtherGuid[] = "This site specific tscript cannot be run on this NQ2 machine.";
inline constexpr char kNoMemoryForUsage[] = "Failed to allocate memory for usage.";
inline constexpr char kNoMemoryForQuery[] = "Failed to allocate memory for query.";
inline constexpr char kInsertFailed[] = "Failed to insert tscript in ZpTscripts. Error : [%s].";
inline constexpr char kUpdateFailed[] = "Failed to update tscript in ZpTscripts. Error : [%s].";
inline constexpr char kStartNotRecorded[] = "Failed to record tscript start time. Error : [%s].";
inline constexpr char kTooManyQuotes[] = "The input has too many single quotes for the journal.";
inline constexpr char kEndWithoutStart[] =
    "Failed to record tscript end time because start time is not recorded!";
inline constexpr char kEndNotRecorded[] = "Failed to record tscript end time. Error : [%s].";

// ---- Package -------------------------------------------------------------------------------------------
inline constexpr char kNoBaseFolder[] = "Failed to get zephra base folder.";
inline constexpr char kNoPackagePath[] = "Failed to get sql file based on script name.";
inline constexpr char kPackageNotFound[] = "TScript file not found!";
inline constexpr char kPackageUnreadable[] = "Failed to access script file [%s].";
inline constexpr char kCopyNotCreated[] =
    "Failed to create decrypted File: [%s].";  // logged with its placeholder unfilled; callers rely on it
inline constexpr char kDecrypting[] = "Decrypt script file [%s].";
inline constexpr char kDecryptFailed[] = "Failed to decrypt script file.";
inline constexpr char kDecryptFailedPath[] = "Failed to create decrypted script file [%s].";
inline constexpr char kCopyNotOpened[] = "Failed to open decrypted script file.";
inline constexpr char kCopyNotOpenedPath[] = "Failed to open decrypted script file [%s].";
inline constexpr char kOutsideSections[] = "setSQLFile() - Ignore Unknown Content Type [%d].";
inline constexpr char kOtherDatabase[] =
    "The package is made for the database [%s] and cannot run in [%s]. Run it without naming a database.";
inline constexpr char kNoDatabaseInfo[] = "Failed to get database info.";

// ---- Run of a package or a procedure -------------------------------------------------------------------
inline constexpr char kSqlFileNotCreated[] = "Failed to create sql File: [%s].";
inline constexpr char kSqlFileNotOpened[] = "Failed to open file [%s].";
inline constexpr char kSqlFileNotWritten[] = "Failed to write sql File: [%s], Error[%d : %s].";
inline constexpr char kStarted[] = "Tscript Execution Started!";
inline constexpr char kRefusedValue[] = "The values are refused: ";
inline constexpr char kSucceeded[] = "Tscript Execution Succeeded!";
inline constexpr char kOutputNotCreated[] = "Failed to create output File: [%s].";
inline constexpr char kOutputFile[] = "Output File: [%s].";
inline constexpr char kToolOutput[] = "Tscript Output:\n";

namespace package_run {
inline constexpr char kOutputAttemptFailed[] = "Failed to create output File: [%s], Error[%d][%s].";
inline constexpr char kToolFailed[] = "Failed at RunFileQuery_TS! Error: [%s].";
inline constexpr char kOutputNotOpened[] = "Failed to open output file [%s].";
inline constexpr char kOutputNotClosed[] = "Failed to close output file [%s].";
inline constexpr char kOutputNotDeleted[] = "Failed to delete output file [%s].";
}  // namespace package_run

namespace procedure_run {
inline constexpr char kInvalidName[] = "Invalid tscript name!";
inline constexpr char kNeedUser[] = "Need userId input for secured Tscript!";
inline constexpr char kTypeNotRead[] = "Failed to read whether the tscript is secured.";
inline constexpr char kInvalidOperation[] = "Invalid Tscript Operation Type.";
inline constexpr char kStartedAs[] = "Optype[%d] AuditLevel[%d]: Tscript Execution Started!";
inline constexpr char kHelpSucceeded[] = "Tscript Help Information Retrieved!";
inline constexpr char kParametersSucceeded[] = "Tscript Parameter Information Retrieved!";
inline constexpr char kOutputAttemptFailed[] = "Failed to create output File: [%s], Error[%d].";
inline constexpr char kToolFailed[] = "Failed at RunStringQuery_TS! Error: [%s].";
inline constexpr char kHeaderNotRemoved[] =
    "Failed to remove the header of output file [%s], Error[%d : %s].";
inline constexpr char kOutputStepFailed[] =  // "open", "close", "delete"
    "Failed to %s output file [%s], Error[%d : %s].";
}  // namespace procedure_run

// ---- Records of scripts and runs -----------------------------------------------------------------------
namespace records {
inline constexpr char kNotOpen[] = "No database is open. Call open first.";
inline constexpr char kOpenTwice[] =
    "The database has been chosen already. Use a new object for another one.";
inline constexpr char kNotRead[] =
    "The catalogue or journal of [%s] cannot be read. The debug log has the driver's message.";
inline constexpr char kPatternTooLong[] = "The name pattern is longer than 256 bytes. Shorten it.";
inline constexpr char kPageLength[] = "A page has 1 to 10,000 rows.";
}  // namespace records

}  // namespace messages

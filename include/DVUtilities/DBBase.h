// One SQL Server database: its settings, the direct connection, the query tool, and server maintenance.
#pragma once

#include <string>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/Export.h"

class VTSimpleDBConnObject;

struct IdNameItem_t {
    int id = 0;
    std::string name;
};

struct IdId_t {
    int id1 = 0;
    int id2 = 0;
};

struct IdIdName_t {
    int id1 = 0;
    int id2 = 0;
    std::string name;
};

// A row text is one result row as one string: its columns in UTF-8, joined by the character 0x12.
//
// One thread per object. Strings are NUL-terminated; a null string counts as empty unless stated otherwise.
// An operation that fails returns false (or the value named). Account discovery, the query tool and server
// maintenance leave the reason in getErrorMsg() and in the log file. A direct connection reports its failures
// in the debug log only. DVU_GetCauses() (Diagnostics.h) returns the causes of any failure. A log line that
// cannot be written, because the log file is null, empty or cannot be opened, is lost; a message on standard
// output says so.
class DVU_EXPORT DBBase {
  public:
    // `flag` is stored and not used.
    explicit DBBase(bool flag);
    ~DBBase();  // closes the connection
    DBBase(const DBBase&) = delete;
    DBBase& operator=(const DBBase&) = delete;

    // ---- Settings --------------------------------------------------------------------------------------

    // Reads server, authentication and credentials of one of the suite's databases from the configuration and
    // probes the connection. `dbName`: "Dorvas", "NQ2", "VTCloud", "WFEngine" or "HistoryDB" in any case;
    // null or empty means "Dorvas". getErrorMsg() and the log file get the outcome, success included. The
    // machine's name is cut to 127 bytes, the database's to 255; both are interpreted as format strings
    // (docs/quirks.md).
    //
    // A failed call keeps what it has read so far. A second call overwrites the settings, with two
    // exceptions: Windows authentication, once on, stays on; and the object keeps the kind of the first
    // database beside that of the second. Server, credentials and connection name are then read for one of
    // the two, by fixed orders of precedence. Use a new object for another database.
    bool GetAccountInfo(const char* machineName, const char* controlSetName, const char* logFile,
                        const char* dbName);
    // The part of GetAccountInfo() that reads the credentials and probes, for the database that
    // GetAccountInfo() chose. `errorText` receives the reason of a failure, or "Successfully connected ...".
    // It stays unchanged when only the probe fails.
    bool GetDBUser(const char* controlSetName, const char* dbName, std::string& errorText);
    // Sets these four values without a check. Database name, authentication and everything else stay as they
    // are. Null counts as empty.
    void SetAccountInfo(const char* serverInstance, const char* userName, const char* password,
                        const char* logFile);
    // 1: the suite's main product; any other value: TNet. DBTest() queries a table of the main product for
    // every value but 0.
    void setProductTypeZephra(int productType);
    // Runs the probe statement over the direct connection.
    bool DBTest();
    // Appends a line to the object's log file; `level` is not used.
    void DBLogLine(const std::string& line, int level);
    // The last error (or result) message. Never null; valid until it changes or the object is destroyed.
    // Success does not clear it.
    const char* getErrorMsg() const;

    // ---- Direct connection -----------------------------------------------------------------------------

    // Opens the connection; an open one is closed and opened again. Null arguments mean the object's own
    // values. The data source appears in the debug log only.
    bool Open(char* dataSource, char* userName, char* password);
    bool Connect(char* dataSource, char* userName, char* password);
    bool Close();  // always true
    // ExecuteQuery() and GetValue() need an open connection and fail without one. An error behind the first
    // rows of a result is detected only by an operation that reads all rows (the list forms).
    bool ExecuteQuery(const char* sql);
    bool ExecuteQuery(unsigned char* sql);
    // Reads the first column of the first row: into `text`, with its NUL (result 1); if that is null, into
    // `wide` (result 1); if both are null, as a number, which is the result. -1 means a failure or no row,
    // and also a value of -1. The buffers must have room for the whole value.
    int GetValue(const char* sql, char* text, wchar_t* wide);
    int GetValue(unsigned char* sql, char* text, wchar_t* wide);
    // Appends a row text of the first `columns` columns for each row. True also for no rows. After a failed
    // fetch, the rows before it stay in the list.
    bool GetValue(const char* sql, std::vector<std::string>& rows, int columns);
    bool GetValue(unsigned char* sql, std::vector<std::string>& rows, int columns);

    // Each opens the connection, executes one statement and closes the connection. Lists are cleared when it
    // is open.
    bool SetDBValue(const char* sql);  // after a failed statement the connection stays open
    bool SetDBValue(unsigned char* sql);
    bool GetDBValueInt(const char* sql, int& value);  // false for -1 as well
    bool GetDBValueInt(unsigned char* sql, int& value);
    // `text` must have room for the whole value with its NUL. A null buffer drops the value, and a value of
    // "-1" then counts as a failure. After a failed read the connection stays open.
    bool GetDBValueStr(const char* sql, char* text);
    bool GetDBValueStr(unsigned char* sql, char* text);
    bool GetDBValueStr(const char* sql, wchar_t* text);
    bool GetDBValueStr(unsigned char* sql, wchar_t* text);
    bool GetDBValueList(const char* sql, std::vector<std::string>& rows, int columns);
    bool GetDBValueList(unsigned char* sql, std::vector<std::string>& rows, int columns);
    // These three return true with an empty list after a failed statement, and true with the rows before it
    // after a failed fetch (docs/quirks.md).
    bool GetDBValueIntList(const char* sql, std::vector<int>& values);
    bool GetDBValueIntList(unsigned char* sql, std::vector<int>& values);
    bool GetDBValueIntIntList(const char* sql, std::vector<IdId_t>& values);
    bool GetDBValueIntIntList(unsigned char* sql, std::vector<IdId_t>& values);
    bool GetDBValueIdIdNameList(const char* sql, std::vector<IdIdName_t>& values);
    bool GetDBValueIdIdNameList(unsigned char* sql, std::vector<IdIdName_t>& values);
    // The names' single quotes are doubled by fixTheString(char*). False after a failed statement.
    bool GetDBValueIdName(const char* sql, std::vector<IdNameItem_t>& values);
    bool GetDBValueIdName(unsigned char* sql, std::vector<IdNameItem_t>& values);

    // Splits a row text into `fieldCount` buffers of 129 characters each. If `fields` is null, they are
    // allocated; the caller owns them and releases them by cleanupRecord() with the same count. Empty fields
    // are skipped; a longer field is cut to 128 characters; fields are interpreted as format strings
    // (docs/quirks.md).
    void parseRecord(const char* row, char**& fields, int fieldCount);
    void parseRecord(const wchar_t* row, wchar_t**& fields, int fieldCount);
    void cleanupRecord(char**& fields, int fieldCount);
    void cleanupRecord(wchar_t**& fields, int fieldCount);
    // Doubles single quotes for SQL literals. The char form works in place by ReplaceString(), which doubles
    // at most two quotes correctly (docs/quirks.md); the buffer must have room for the longer string.
    void fixTheString(char* text);
    void fixTheString(std::string& text);
    // Replaces in place at most 10 occurrences; the buffer must have room for the result. A longer
    // replacement and overlapping matches have rules of their own (docs/quirks.md).
    void ReplaceString(char* text, const char* find, const char* replacement);

    // ---- Query tool ------------------------------------------------------------------------------------

    // Runs a command line without a shell and waits (`timeout` in milliseconds; 0xFFFFFFFF: no limit). True
    // for exit code 0 only; the debug log holds the reason of a failure. The program's path must not contain
    // a blank, quoted or not.
    bool StartProcess(const char* commandLine, unsigned int timeout);
    // The following operations run sqlcmd on a file or a string and wait without limit. A null output file
    // means a new temporary one; a null or empty database means "Dorvas". The caller reads and deletes the
    // output file. On failure getErrorMsg() is "Failed to execute SQL Script!"; the tool's own messages are
    // in the output file.
    //
    // Nothing is escaped. A call with a double quote in an argument or the login fails and runs nothing.
    // Server, user and database are not quoted on the command line: they must not contain blanks. SQL given
    // as a string is one argument of the tool, for which the operating system's limit is 128 KiB; above it
    // the tool does not start. RunStringQuery() has a limit of its own.
    //
    // `toolSyntax`: columns separated by tabs, trailing blanks trimmed, and `errorLevel` for "-m 1". Without
    // it, the tool's own layout of padded columns; `errorLevel` is not used then.
    bool RunFileQuery(const char* sqlFile, const char* outputFile, const char* dbName, bool toolSyntax,
                      bool errorLevel);
    // `options`: 2 error level 1, 4 unlimited column width, 8 Unicode output file.
    bool RunFileQuery_TS(const char* sqlFile, const char* outputFile, const char* dbName, int options);
    // Always uses user name and password. The whole command line is cut to 4,095 bytes (docs/quirks.md): a
    // longer one usually loses a closing quote, and then the tool does not start. Writes the layout that
    // parseOutputFile() reads. The failure message has no "!".
    bool RunStringQuery(const char* sql, const char* outputFile, const char* dbName);
    bool RunStringQuery_TS(const char* sql, const char* outputFile, const char* dbName, int options);
    // `separator`: between two columns; null means ",".
    bool generateCSVOutput(const char* sqlFile, const char* outputFile, const char* dbName,
                           const char* separator);
    // Sets and logs the path of sqlcmd that the command lines use; only the first call has an effect. The
    // path is always "/opt/mssql-tools/bin/sqlcmd" and `fallbackTool` stays unused; the configuration may map
    // the tool to another program. The operations above call it.
    void getSQLPath(const char* fallbackTool);
    // Returns a path in the installation's temporary folder; the same one for calls within one second.
    // Creates no file.
    void getTempFileName(std::string& name);
    // Appends the rows of a file that RunStringQuery() wrote, as row texts of at most `fieldCount` fields. A
    // row with fewer fields ends with a separator. Blanks separate fields, so a value with blanks becomes
    // several. The first two lines are headings; an empty line ends the rows. False only for a file that
    // cannot be read; getErrorMsg() names it.
    bool parseOutputFile(char* outputFile, std::vector<std::string>& rows, int fieldCount);
    // Entry points that do nothing and return false.
    bool createSQLFileAndExecute(const char* sql, const char* outputFile, const char* dbName);
    bool createSQLFileAndGenerateCSVOutput(const char* sql, const char* outputFile, const char* dbName,
                                           const char* separator);

    // ---- Server maintenance ----------------------------------------------------------------------------
    // All run in "MASTER" by RunStringQuery(), and so with user name and password. Names and paths are
    // inserted into the statements as they are: a quote in them breaks the statement. Statements are cut to
    // 4,999 bytes, paths to 1,023. getErrorMsg() and the log file get the failed statement, or what was done.
    // The tool's output goes to a file of getTempFileName(), which only its owner may read. getDBList(),
    // checkSQLServerProductVersion() and a failed getLastBackUpInfo() leave it behind.

    std::vector<std::string> getDBList();  // user databases; empty on failure
    // Backs up to "<directory>/<backupFile>" on the server.
    bool backUpDB(const char* backupFile, const char* directory, const char* dbName);
    // Builds and logs the whole restore statement, but does not execute it: always false (docs/quirks.md).
    // Each data file's path is `directory` and its logical name, so `directory` must end in "/".
    bool restoreDB(const char* backupFile, const char* directory, const char* dbName);
    // Returns the days since the last full backup (at least 11 bytes) and its date (at least 21 bytes), both
    // "NULL" when there is none. Null buffers are skipped.
    bool getLastBackUpInfo(const char* dbName, char* days, char* date);
    std::string checkSQLServerProductVersion();  // major version, or "-1"

  private:
    friend struct DatabaseParts partsOf(DBBase& db);  // the library's own view
    friend void DVU_GetCauses(const DBBase& db, std::vector<DVUCause_t>& causes);

    char m_machineName[128] = {};
    char m_dataSource[128] = {};
    std::string m_serverInstance;
    std::string m_userName;
    std::string m_password;
    [[maybe_unused]] int m_flag;
    std::string m_toolPath;
    int m_productType = 1;
    bool m_dorvas = false;
    bool m_wfEngine = false;
    bool m_historyDB = false;
    bool m_vtCloud = false;
    bool m_nq2 = false;
    std::string m_probeQuery;
    std::string m_errorMessage;
    std::string m_logFile;
    char m_separator[2] = {'\x12', '\0'};
    wchar_t m_wideSeparator[4] = {L'\x12', L'\0'};
    bool m_windowsAuthentication = false;
    std::string m_dbName;
    VTSimpleDBConnObject* m_connection = nullptr;  // owned
    DVUCauseList* m_causes = nullptr;              // owned; of the last operation, null after a success
};

extern "C" {

// Lists the user databases of a server; replaces `names`. False when there is none and on a failure, with the
// object's last message in `errorText`. `errorText` is unchanged on success.
DVU_EXPORT bool GetDatabaseList(const char* serverInstance, const char* userName, const char* password,
                                const char* logFile, std::string& errorText, std::vector<std::string>& names);
// DBBase::restoreDB() without an object: always false, with the message in `errorText`.
DVU_EXPORT bool RestoreDatabase(const char* backupFile, const char* directory, const char* dbName,
                                const char* serverInstance, const char* userName, const char* password,
                                const char* logFile, std::string& errorText);
}

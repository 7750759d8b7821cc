// One SQL Server database: its settings, the direct connection, the query tool, and server maintenance.
#pragma once

#include <string>
#include <vector>

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

// A row text is one result row as one string: its columns as UTF-8 text, joined by the character 0x12.
//
// One thread per object. Texts are NUL-terminated; a null text counts as empty unless said otherwise. Every
// failing operation returns false (or the value named). getErrorMsg() holds the reason where the operation
// leaves one: account discovery, the query tool and server maintenance do, and log it too; direct-connection
// failures are told in the debug log only. Log lines are lost, and standard output says so, when the log file
// is null, empty or cannot be opened.
class DVU_EXPORT DBBase {
  public:
    // `flag` is kept and not consulted.
    explicit DBBase(bool flag);
    ~DBBase();  // closes the connection
    DBBase(const DBBase&) = delete;
    DBBase& operator=(const DBBase&) = delete;

    // ---- Settings --------------------------------------------------------------------------------------

    // Finds server, authentication and credentials of one of the suite's databases ("Dorvas", "NQ2",
    // "VTCloud", "WFEngine", "HistoryDB", any case; null or empty: "Dorvas") in the configuration and probes
    // the connection. The outcome, success included, is in getErrorMsg() and in the log file. The machine's
    // name is kept to 127 bytes, the database's to 255; both are interpreted as format strings
    // (docs/quirks.md). A second call overwrites what the first one found.
    bool GetAccountInfo(const char* machineName, const char* controlSetName, const char* logFile,
                        const char* dbName);
    // The credentials' part of GetAccountInfo(), for the database that it settled on. `errorText` says why it
    // failed, or "Successfully connected ..."; it is left alone when the probe alone fails.
    bool GetDBUser(const char* controlSetName, const char* dbName, std::string& errorText);
    // Sets these four and nothing else; no check is made. Null counts as empty.
    void SetAccountInfo(const char* serverInstance, const char* userName, const char* password,
                        const char* logFile);
    // 1: the suite's main product; any other value: TNet. DBTest() asks the main product's tables for every
    // value but 0.
    void setProductTypeZephra(int productType);
    // Runs the probe statement over the direct connection.
    bool DBTest();
    // Appends a line to the object's log file; `level` is not used.
    void DBLogLine(const std::string& line, int level);
    // The last error (or result) text, never null; valid until it changes or the object is destroyed. Success
    // does not clear it.
    const char* getErrorMsg() const;

    // ---- Direct connection -----------------------------------------------------------------------------

    // Null arguments mean the object's own values; the data source serves the debug log only. An open
    // connection is opened anew.
    bool Open(char* dataSource, char* userName, char* password);
    bool Connect(char* dataSource, char* userName, char* password);
    bool Close();  // always true
    // ExecuteQuery() and GetValue() need an open connection and fail without one.
    bool ExecuteQuery(const char* sql);
    bool ExecuteQuery(const unsigned char* sql);
    // First column of the first row: copied whole with its NUL into `text`, else into `wide` (result 1), else
    // as a number in the result. -1 for a failure or no row, which a value of -1 cannot be told from. The
    // buffers are not bounded: they must hold the value.
    int GetValue(const char* sql, char* text, wchar_t* wide);
    int GetValue(const unsigned char* sql, char* text, wchar_t* wide);
    // Appends one row text of the first `columns` columns a row; true also for no rows. Rows that came before
    // a failed fetch stay in the list.
    bool GetValue(const char* sql, std::vector<std::string>& rows, int columns);
    bool GetValue(const unsigned char* sql, std::vector<std::string>& rows, int columns);

    // Each opens the connection, runs one statement and closes it. Lists are cleared once it is open.
    bool SetDBValue(const char* sql);  // after a failed statement the connection stays open
    bool SetDBValue(const unsigned char* sql);
    bool GetDBValueInt(const char* sql, int& value);  // false for -1 as well
    bool GetDBValueInt(const unsigned char* sql, int& value);
    // `text` must hold the whole value with its NUL. After a failed read the connection stays open.
    bool GetDBValueStr(const char* sql, char* text);
    bool GetDBValueStr(const unsigned char* sql, char* text);
    bool GetDBValueStr(const char* sql, wchar_t* text);
    bool GetDBValueStr(const unsigned char* sql, wchar_t* text);
    bool GetDBValueList(const char* sql, std::vector<std::string>& rows, int columns);
    bool GetDBValueList(const unsigned char* sql, std::vector<std::string>& rows, int columns);
    // True with an empty list after a failed statement (docs/quirks.md).
    bool GetDBValueIntList(const char* sql, std::vector<int>& values);
    bool GetDBValueIntList(const unsigned char* sql, std::vector<int>& values);
    bool GetDBValueIntIntList(const char* sql, std::vector<IdId_t>& values);
    bool GetDBValueIntIntList(const unsigned char* sql, std::vector<IdId_t>& values);
    bool GetDBValueIdIdNameList(const char* sql, std::vector<IdIdName_t>& values);
    bool GetDBValueIdIdNameList(const unsigned char* sql, std::vector<IdIdName_t>& values);
    // Names come with their single quotes doubled, ready for SQL literals.
    bool GetDBValueIdName(const char* sql, std::vector<IdNameItem_t>& values);
    bool GetDBValueIdName(const unsigned char* sql, std::vector<IdNameItem_t>& values);

    // Splits a row text into `fieldCount` buffers of 129 characters each, allocated when `fields` is null
    // (then owned by the caller and released by cleanupRecord with the same count). Empty fields vanish; a
    // longer field is cut to 128 characters; fields are interpreted as format strings (docs/quirks.md).
    void parseRecord(const char* row, char**& fields, int fieldCount);
    void parseRecord(const wchar_t* row, wchar_t**& fields, int fieldCount);
    void cleanupRecord(char**& fields, int fieldCount);
    void cleanupRecord(wchar_t**& fields, int fieldCount);
    // Doubles single quotes for SQL literals. The char form works in place by ReplaceString()
    // (docs/quirks.md): the buffer must have room for the longer text.
    void fixTheString(char* text);
    void fixTheString(std::string& text);
    // In place; the buffer must have room for the result. At most 10 occurrences, found without looking back
    // (docs/quirks.md).
    void ReplaceString(char* text, const char* find, const char* replacement);

    // ---- Query tool ------------------------------------------------------------------------------------

    // Runs a command line without a shell and waits (`timeout` in milliseconds, 0xFFFFFFFF: without limit).
    // False for anything but exit code 0; the reason goes to the debug log. No path with a blank in the
    // program's name, quoted or not.
    bool StartProcess(const char* commandLine, unsigned int timeout);
    // The runners start sqlcmd on a file or a text and wait without limit. A null output file means a fresh
    // temporary one; a null or empty database means "Dorvas". Output files are left to the caller, who reads
    // and deletes them. Nothing in texts and names is escaped: they must hold no double quote. A failure is
    // "Failed to execute SQL Script!" in getErrorMsg(); the tool's own messages are in the output file.
    // `toolSyntax`: columns kept apart by tabs, trailing blanks trimmed, and `errorLevel` for "-m 1".
    bool RunFileQuery(const char* sqlFile, const char* outputFile, const char* dbName, bool toolSyntax,
                      bool errorLevel);
    // `options`: 2 error level 1, 4 unlimited column width, 8 Unicode output file.
    bool RunFileQuery_TS(const char* sqlFile, const char* outputFile, const char* dbName, int options);
    // Always with user name and password. The whole command line is cut to 4,095 bytes (docs/quirks.md).
    // Writes the layout that parseOutputFile() reads. Its failure text ends without "!".
    bool RunStringQuery(const char* sql, const char* outputFile, const char* dbName);
    bool RunStringQuery_TS(const char* sql, const char* outputFile, const char* dbName, int options);
    bool generateCSVOutput(const char* sqlFile, const char* outputFile, const char* dbName,
                           const char* separator);
    // Settles the tool's path on first use and logs it.
    void getSQLPath(const char* fallbackTool);
    // A name in the installation's temporary folder; the same one for calls within one second. No file is
    // made.
    void getTempFileName(std::string& name);
    // Appends the rows of a file that RunStringQuery() wrote, as row texts of at most `fieldCount` fields; a
    // row with fewer ends with a separator. The first two lines are headings; an empty line ends the rows.
    // False only for a file that cannot be read; getErrorMsg() names it.
    bool parseOutputFile(char* outputFile, std::vector<std::string>& rows, int fieldCount);
    // Entry points that do nothing and return false.
    bool createSQLFileAndExecute(const char* sql, const char* outputFile, const char* dbName);
    bool createSQLFileAndGenerateCSVOutput(const char* sql, const char* outputFile, const char* dbName,
                                           const char* separator);

    // ---- Server maintenance ----------------------------------------------------------------------------
    // All run in "MASTER" with user name and password. Names and paths stand in the statements as they are: a
    // quote in them breaks the statement. Statements are cut to 4,999 bytes, paths to 1,023. getErrorMsg()
    // and the log file hold the failed statement, or what was done. The tool writes to a file of
    // getTempFileName(), which nobody else may read; the list and the version leave it behind, and so does a
    // failed getLastBackUpInfo().

    std::vector<std::string> getDBList();  // user databases; empty on failure
    // Into "<directory>/<backupFile>" on the server.
    bool backUpDB(const char* backupFile, const char* directory, const char* dbName);
    // Builds and logs the whole restore statement, then returns false: it is not run (docs/quirks.md). Data
    // files keep their logical names, put directly behind `directory`, which therefore ends in "/".
    bool restoreDB(const char* backupFile, const char* directory, const char* dbName);
    // Days since the last full backup (at least 11 bytes) and its date (at least 21 bytes), both "NULL" when
    // there is none. Null buffers take nothing.
    bool getLastBackUpInfo(const char* dbName, char* days, char* date);
    std::string checkSQLServerProductVersion();  // major version, or "-1"

  private:
    friend struct DatabaseParts partsOf(DBBase& db);  // the library's own view

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
};

extern "C" {

// The user databases of a server; `names` is replaced. False when there is none or on a failure; `errorText`
// then says why, and is left alone otherwise.
DVU_EXPORT bool GetDatabaseList(const char* serverInstance, const char* userName, const char* password,
                                const char* logFile, std::string& errorText, std::vector<std::string>& names);
// DBBase::restoreDB() for callers without an object: always false, with the statement in `errorText`.
DVU_EXPORT bool RestoreDatabase(const char* backupFile, const char* directory, const char* dbName,
                                const char* serverInstance, const char* userName, const char* password,
                                const char* logFile, std::string& errorText);
}

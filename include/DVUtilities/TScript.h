// One run of one named script.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "DVUtilities/Diagnostics.h"
#include "DVUtilities/Export.h"

class DBBase;
class DVUtilLib;

// Use: construct, call initialize(), then setSQLFile() (a package) or setDbAndLog() (a stored procedure),
// then an execution operation, then the getters. One thread per object. Every operation returns true for
// success. Messages for the user accumulate in getOutput(); getErrorMessage() holds the last message, of
// success, too; DVU_GetCauses() (Diagnostics.h) returns the causes of a failure. No operation throws: one
// that cannot be completed, for lack of memory above all, reports so and fails. Before initialize() every
// operation that needs the session reports so and fails. Script names are cut to 128 bytes in the catalogue.
//
// The getters' strings are never null. The object owns them; they are valid until they change or the object
// is destroyed. Query tool output is read in chunks of 4,095 bytes (of a procedure: 32,767), and a NUL byte
// in it hides the rest of its chunk.
class DVU_EXPORT TScript {
  public:
    TScript();
    ~TScript();
    TScript(const TScript&) = delete;
    TScript& operator=(const TScript&) = delete;

    // ---- Session ---------------------------------------------------------------------------------------

    // Sets the script's name (null or empty fails), reads host and instance names, makes the instance the one
    // in focus and starts the session log "Tscript.log". A second call does the same with new database and
    // host objects and keeps everything else: the loaded package, the catalogue's id, the output, the name of
    // the chosen database. The new database object has no account, so operations on the database fail, and
    // setDbAndLog() returns true without connecting. Use a new object for another script.
    bool initialize(const char* name);
    // Chooses the database, connects to it and looks the script up in the catalogue. `dbName`: "Dorvas",
    // "TNet", "NQ2", "WFEngine", "VTCloud" or "HistoryDB" in any case; null or empty: the database of the
    // installed component. A valid name is chosen once per object, even if the connection or the look-up then
    // fails: every later call returns true, whatever it names, and does not connect. After a failure use a
    // new object.
    bool setDbAndLog(const char* dbName);

    // ---- Catalogue (each needs setDbAndLog() or setSQLFile() before it) ---------------

    // Looks the script up in the catalogue, unless its id is known: a package's row for a package, otherwise
    // a permanent one; the newest row counts. Sets id, audit level and the name in the catalogue's spelling.
    // A failed statement is false, like a script that is not found. A failed connection is true, with the id
    // left at 0 (docs/quirks.md).
    bool getTscriptId();
    // Returns whether the package may run at this site. True for a package that is bound to none.
    bool checkPlexumId();
    // The same for the installation's GUID, which is checked for the database NQ2 only.
    bool checkGUID();
    // Adds a package to the catalogue, or updates the usage text of its row. False without a message for a
    // script that is not a package. The usage text's single quotes are doubled by
    // DBBase::fixTheString(char*): with more than two of them the statement usually is invalid and fails.
    bool addNewTscript();
    // Adds the run to the journal, with `inputParams` (null: empty) as the caller's input. The whole
    // statement is cut to the length of `inputParams` plus 1,023 bytes, so that it fails for an input with
    // more than about 700 single quotes, each of which is doubled. True also for a script that is not in the
    // catalogue, although no row is written then; recordExecEnd() fails for that run.
    bool recordExecStart(const char* inputParams);
    // Records the end of the run. `status`: 1 succeeded, 2 failed. Fails when no start is recorded. While the
    // server cannot be reached, tries again for 5 seconds.
    bool recordExecEnd(int status);

    // ---- Package ---------------------------------------------------------------------------------------

    // Decrypts and parses a package, chooses its database and adds it to the catalogue. Null or empty: the
    // package is found by the script's name. If the object has a path already, it keeps that and ignores the
    // argument. The decrypted copy, a file that only its owner may read, is deleted before the call returns.
    // After a failure what has been parsed stays. Memory: the statements once, and a little more.
    bool setSQLFile(const char* path);
    // Returns the package's path, derived from the script's name if it is not known yet; empty when the
    // configuration names no installation folder.
    const char* getSQLFile();
    // Replaces `text` by usage, description and creation time of a loaded package. Loading it has written to
    // the catalogue already.
    void getSQLFileHelp(std::string& text);

    // ---- Execution -------------------------------------------------------------------------------------

    // Runs a loaded package through the query tool. `parameters` fill its "%s" placeholders in order. Every
    // run is recorded in the journal, whatever the audit level, with `recordedInput` (null or empty: the
    // parameters that filled a placeholder, joined by ", ").
    //
    // Single quotes in a parameter are doubled by DBBase::fixTheString(char*), which yields a valid literal
    // for at most two of them (docs/quirks.md). The query tool expands "$(NAME)" in the statements and in
    // parameters as its own variables.
    //
    // The tool's output is added to getOutput(), after a failure as well; memory for it twice. After a
    // success a line "Tscript Execution Succeeded!" follows. The SQL file is deleted unless the configuration
    // sets "dUTILKEEPSQLFILE". If no output file can be created, the journal's row gets no end and the SQL
    // file stays.
    bool executeSQLFile(std::vector<std::string> parameters, const char* recordedInput);

    // Returns whether the name is a stored-procedure tscript. Starts the session and chooses the database if
    // that has not been done. False for an object that holds a package.
    bool isTscriptSP(const char* name, const char* dbName);
    // Runs a stored-procedure tscript through the query tool, or a query about it. `operation`: 1 execute, 2
    // help, 4 parameters. `arguments` (may be null) follow the procedure's name as they are. They must not
    // contain a double quote, which would end the argument on the query tool's command line; the tool expands
    // "$(NAME)" in them as its own variables. The query is cut to 8,191 bytes plus the length of `arguments`;
    // as one argument of the query tool it must stay below the operating system's limit of 128 KiB.
    //
    // Only executions of scripts with an audit level above 0 are recorded in the journal, with
    // `recordedInput` (null or empty: the arguments). `userId`: the user of the run; a secured script needs
    // one other than 0. A script whose type cannot be read from the catalogue is not executed.
    //
    // The tool's output is added to getOutput(), after a failure as well. After a success a message of
    // success follows, without a line break at its end. If no output file can be created, the journal's row
    // gets no end.
    bool execTscript(int operation, const char* arguments, const char* recordedInput, int userId);

    // ---- State and results of the run ------------------------------------------------------------------

    const char* getScriptName() const;
    const char* getDbName() const;
    const char* getLogFile() const;
    const char* getErrorMessage() const;
    const char* getUsage() const;
    const char* getOutput() const;
    const char* getDescription() const;
    int getAuditLevel() const;
    // The script's creation time as "YYYY/MM/DD hh:mm:ss", local time. For a script that is not a package,
    // the time of the object's construction.
    const char* getCreation();

  private:
    friend struct ScriptParts partsOf(TScript& script);  // the library's own view
    friend void DVU_GetCauses(const TScript& script, std::vector<DVUCause_t>& causes);

    DBBase* m_db = nullptr;       // owned
    DVUtilLib* m_util = nullptr;  // owned
    std::string m_machineName;
    std::string m_instanceName;
    std::string m_errorMessage;
    std::string m_logFile;
    std::string m_logDir;
    std::string m_outputFile;
    std::int32_t m_tscriptId = 0;
    std::int32_t m_execId = 0;
    std::string m_scriptName;
    std::int64_t m_plexumId = 0;
    std::time_t m_loadTime;
    std::time_t m_creationTime;
    std::string m_developerName;
    std::string m_description;
    std::string m_usage;
    std::string m_output;
    std::string m_sqlFilePath;
    std::string m_scriptBody;
    std::string m_guid;
    std::string m_dbName;
    bool m_fromPackage = false;
    std::int32_t m_contentType = 0;
    std::int32_t m_auditLevel = 0;
    bool m_secured = false;
    bool m_typeRead = false;  // m_secured is known
    std::int32_t m_userId = 0;
    std::string m_creationText;        // last result of getCreation()
    DVUCauseList* m_causes = nullptr;  // owned; of the last operation, null after a success
    std::string m_packageHash;         // of the loaded package, for the run record
};

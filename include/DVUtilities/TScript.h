// One run of one named script.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "DVUtilities/Export.h"

class DBBase;
class DVUtilLib;

// Construct, call initialize(), then setSQLFile() (a package) or setDbAndLog() (a script that only the
// catalogue knows), then an execution operation, then the getters. One thread per object. Every operation
// returns true for success; messages for the user gather in getOutput(), the last one (of success, too)
// stands in getErrorMessage(). Nothing is thrown: an operation that is broken off, for lack of memory above
// all, says so there and fails. The texts that getters return are never null and stay the object's, valid
// until it changes or is destroyed; a query tool's output with NUL bytes in it is seen up to the first one.
//
// Before initialize() every operation that needs the session fails and says so. Names that go through the
// catalogue are cut to 128 bytes there.
class DVU_EXPORT TScript {
  public:
    TScript();
    ~TScript();
    TScript(const TScript&) = delete;
    TScript& operator=(const TScript&) = delete;

    // ---- Session ---------------------------------------------------------------------------------------

    // Names the script (null or empty fails), finds host and instance, makes the instance the one in focus
    // and starts the session log "Tscript.log". A second call begins anew with its database and host objects
    // and keeps everything else, the chosen database included.
    bool initialize(const char* name);
    // Chooses the database ("Dorvas", "TNet", "NQ2", "WFEngine", "VTCloud", "HistoryDB", any case; null or
    // empty: found from the installed components), connects, and finds the script in the catalogue. The
    // choice is made once per object: a later call returns true whatever it names.
    bool setDbAndLog(const char* dbName);

    // ---- Catalogue (each needs setDbAndLog() or setSQLFile() before it) ---------------

    // Looks the script up in the catalogue: a package's row for a package, else a permanent one, the newest
    // first. Takes over its id, audit level and spelling of the name. Once found it is not looked up again.
    // True as well after a failed query (docs/quirks.md).
    bool getTscriptId();
    // Is this the site that the package is bound to? True for one that is bound to none.
    bool checkPlexumId();
    // The same for the installation's identity; it is asked for NQ2 databases only.
    bool checkGUID();
    // Enters a package into the catalogue, or refreshes the usage text of its row. False without a message
    // for a script that is no package.
    bool addNewTscript();
    // Opens this run's row in the journal, with `inputParams` (null: empty) as what the caller passed. The
    // whole statement is cut to the length of `inputParams` and 1,023 bytes, so that a text of more than some
    // 700 single quotes, each of which is doubled, cannot be recorded.
    bool recordExecStart(const char* inputParams);
    // Closes it. `status`: 1 succeeded, 2 failed. Fails when no start is recorded.
    bool recordExecEnd(int status);

    // ---- Package ---------------------------------------------------------------------------------------

    // Finds (null or empty: by the script's name), deciphers, parses and catalogues a package, which also
    // chooses the database. A path that the object already has is kept and the argument ignored. The plain
    // copy that it works on, a file that its owner alone may read, is gone when it returns; what a failed
    // load had parsed stays. Memory for the statements once, and a little.
    bool setSQLFile(const char* path);
    // The package's path, found by the script's name when it is not yet known; empty when the configuration
    // names no base folder.
    const char* getSQLFile();
    // Usage, description and creation time of a loaded package, as one text in place of what `text` held.
    void getSQLFileHelp(std::string& text);

    // ---- Execution -------------------------------------------------------------------------------------

    // Runs a loaded package through the query tool. `parameters` fill its "%s" placeholders in order;
    // `recordedInput` is what the journal keeps (null or empty: the parameters that met a placeholder, joined
    // by ", "). Single quotes in a parameter are doubled by DBBase::fixTheString(char*), which yields a valid
    // literal for at most two of them (docs/quirks.md). The tool's output is added to getOutput(), whether it
    // succeeded or not; memory for it twice. The SQL file is removed unless the configuration sets
    // "dUTILKEEPSQLFILE". Without an output file the journal's row stays open and the SQL file stays.
    bool executeSQLFile(std::vector<std::string> parameters, const char* recordedInput);

    // Is the name a stored-procedure tscript? Starts the session and chooses the database where that has not
    // been done. False for an object that holds a package.
    bool isTscriptSP(const char* name, const char* dbName);
    // `operation`: 1 execute, 2 help, 4 parameters. `arguments` (may be null) follow the procedure's name as
    // they stand; they must hold no double quote, at which the query tool's command line would end them. The
    // query is cut to 8,191 bytes and their length. `recordedInput`: what the journal keeps (null or empty:
    // the arguments); only executions of scripts with an audit level above 0 are journalled. `userId`: for
    // whom the script runs; a secured script needs one other than 0. Without an output file a recorded start
    // gets no end.
    bool execTscript(int operation, const char* arguments, const char* recordedInput, int userId);

    // ---- What the run knows and produced ---------------------------------------------------------------

    const char* getScriptName() const;
    const char* getDbName() const;
    const char* getLogFile() const;
    const char* getErrorMessage() const;
    const char* getUsage() const;
    const char* getOutput() const;
    const char* getDescription() const;
    int getAuditLevel() const;
    // The script's creation time as "YYYY/MM/DD hh:mm:ss", local time.
    const char* getCreation();

  private:
    friend struct ScriptParts partsOf(TScript& script);  // the library's own view

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
    std::int32_t m_userId = 0;
    std::string m_creationText;  // what getCreation() returned last
};

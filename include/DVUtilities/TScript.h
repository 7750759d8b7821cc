// One run of one named script.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "DVUtilities/Export.h"

class DBBase;
class DVUtilLib;

// Construct, initialize(), then setSQLFile() (a package) or setDbAndLog() (a script that only the catalogue
// knows), then an execution operation, then the getters. One thread per object. Every operation returns true
// for success; messages for the user gather in getOutput(), the last one stands in getErrorMessage(). Texts
// that getters return stay valid until the object changes or is destroyed.
class DVU_EXPORT TScript {
  public:
    TScript();
    ~TScript();
    TScript(const TScript&) = delete;
    TScript& operator=(const TScript&) = delete;

    bool initialize(const char* name);
    // Chooses the database ("Dorvas", "TNet", "NQ2", "WFEngine", "VTCloud", "HistoryDB", any case; null or
    // empty: found from the installed components), connects, and finds the script in the catalogue. The
    // choice is made once per object.
    bool setDbAndLog(const char* dbName);
    // Looks the script up in the catalogue. True as well after a failed query (docs/quirks.md).
    bool getTscriptId();

    // Finds (null: by the script's name), deciphers, parses and catalogues a package.
    bool setSQLFile(const char* path);
    const char* getSQLFile();  // the package's path
    void getSQLFileHelp(std::string& text);

    bool checkPlexumId();
    bool checkGUID();
    bool addNewTscript();
    bool recordExecStart(const char* inputParams);
    bool recordExecEnd(int status);  // 1 succeeded, 2 failed

    // Runs a loaded package. `parameters` fill its "%s" placeholders in order; `recordedInput` is what the
    // journal keeps (null or empty: the parameters, joined by ", ").
    bool executeSQLFile(std::vector<std::string> parameters, const char* recordedInput);

    bool isTscriptSP(const char* name, const char* dbName);
    // `operation`: 1 execute, 2 help, 4 parameters. `arguments` follow the procedure's name as they stand.
    bool execTscript(int operation, const char* arguments, const char* recordedInput, int userId);

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
    friend class ScriptReport;     // messages: error text, output and log
    friend class ScriptSession;    // initialize(), setDbAndLog()
    friend class ScriptCatalogue;  // getTscriptId(), checks, addNewTscript(), the journal
    friend class PackageLoader;    // setSQLFile()
    friend class SqlFileRun;       // executeSQLFile()
    friend class ProcedureRun;     // execTscript()

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

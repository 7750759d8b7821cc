// Operations on the server as a whole, by way of the query tool.
#pragma once

#include <string>
#include <vector>

#include "DVUtilities/DBBase.h"

// The version of a server that did not tell it.
inline constexpr char kUnknownVersion[] = "-1";

// One operation of DBBase: list, back up, restore, last backup, version. Each sends a statement to "MASTER"
// with the tool's output in a temporary file. Texts are not null.
class ServerMaintenance {
  public:
    explicit ServerMaintenance(DBBase& db);

    std::vector<std::string> databaseList();
    bool backUp(const char* backupFile, const char* directory, const char* dbName);
    bool restore(const char* backupFile, const char* directory, const char* dbName);
    // `days` and `date` as DBBase::getLastBackUpInfo() has them.
    bool lastBackup(const char* dbName, char* days, char* date);
    std::string productVersion();

  private:
    enum class WhenFailed { kLogOutput, kKeepSilent };  // what the tool wrote goes into the log file, or not
    bool run(const std::string& statement, WhenFailed whenFailed = WhenFailed::kLogOutput);
    bool readRows(const std::string& statement, int fields, std::vector<std::string>& rows);
    std::string restoreStatement(const std::string& backupFile, const char* directory, const char* dbName,
                                 const std::vector<std::string>& logicalNames);
    bool sendRestore(const std::string& statement, const std::string& backupFile);
    void copyOutputToLog();
    bool tell(const std::string& message);  // true
    bool fail(const std::string& message);

    DBBase& m_db;
    std::string m_outputFile;
};

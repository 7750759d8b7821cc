// Operations on the server as a whole, by way of the query tool.
#pragma once

#include <string>
#include <vector>

#include "Causes.h"
#include "parts/DatabaseParts.h"

// The version of a server that could not be asked.
inline constexpr char kUnknownVersion[] = "-1";

// One maintenance operation of DBBase. Each sends a statement to "MASTER" and writes the tool's output to a
// temporary file. Arguments are not null, the buffers of lastBackup() excepted.
class ServerMaintenance {
  public:
    explicit ServerMaintenance(const DatabaseParts& db);

    std::vector<std::string> databaseList();
    bool backUp(const char* backupFile, const char* directory, const char* dbName);
    bool restore(const char* backupFile, const char* directory, const char* dbName);
    // `days` and `date` as of DBBase::getLastBackUpInfo().
    bool lastBackup(const char* dbName, char* days, char* date);
    std::string productVersion();

  private:
    enum class WhenFailed { kLogOutput, kDropOutput };  // copy the tool's output to the log file, or not
    bool run(const std::string& statement, WhenFailed whenFailed = WhenFailed::kLogOutput);
    bool readRows(const std::string& statement, int fields, std::vector<std::string>& rows);
    std::string restoreStatement(const std::string& backupFile, const char* directory, const char* dbName,
                                 const std::vector<std::string>& logicalNames);
    bool reportRestore(const std::string& statement, const std::string& backupFile);
    void copyOutputToLog();

    DatabaseParts m_db;
    std::string m_outputFile;
    ExplainedStep m_operation;  // all of it
};

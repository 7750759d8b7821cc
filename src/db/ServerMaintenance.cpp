#include "ServerMaintenance.h"

#include "CallerText.h"
#include "DVUtilities/commonFunc.h"
#include "FX.h"
#include "MaintenanceSql.h"
#include "RowText.h"
#include "TextAsFormat.h"
#include "parts/DatabaseMessages.h"
#include "querytool/QueryTool.h"
#include "querytool/ToolOutput.h"

namespace {

constexpr std::size_t kPathLength = 1023;
constexpr std::size_t kStatementLength = 4999;
// The restore statement is built and reported but not sent: callers take it from the message.
constexpr bool kRestoreIsSent = false;

class RemovedFile {
  public:
    explicit RemovedFile(const std::string& path) : m_path(path) {}
    ~RemovedFile() { FXFile::Remove(m_path.c_str()); }
    RemovedFile(const RemovedFile&) = delete;
    RemovedFile& operator=(const RemovedFile&) = delete;

  private:
    const std::string& m_path;
};

}  // namespace

ServerMaintenance::ServerMaintenance(const DatabaseParts& db)
    : m_db(db), m_outputFile(cutTo(temporaryOutputPath(), kPathLength)) {}

// Leaves the output file behind.
std::vector<std::string> ServerMaintenance::databaseList() {
    const std::string statement = maintenance_sql::kDatabaseList;
    std::vector<std::string> names;
    if (run(statement)) readRows(statement, 1, names);
    return names;
}

bool ServerMaintenance::backUp(const char* backupFile, const char* directory, const char* dbName) {
    const RemovedFile output(m_outputFile);
    const std::string path = cutTo(FXString::Format("%s/%s", directory, backupFile), kPathLength);
    const std::string statement = FXString::Format(maintenance_sql::kBackup, dbName, path.c_str());
    if (!run(cutTo(statement, kStatementLength))) return false;
    m_db.report.report(FXString::Format(database_messages::kBackedUp, dbName, backupFile));
    return true;
}

bool ServerMaintenance::restore(const char* backupFile, const char* directory, const char* dbName) {
    const RemovedFile output(m_outputFile);
    const std::string path = cutTo(backupFile, kPathLength);
    const std::string fileList =
        cutTo(FXString::Format(maintenance_sql::kFileList, path.c_str()), kStatementLength);
    std::vector<std::string> logicalNames;
    return run(fileList) && readRows(fileList, 1, logicalNames) &&
           reportRestore(restoreStatement(path, directory, dbName, logicalNames), path);
}

// Each data file moves to the directory with its logical name appended: no separator, no extension. The whole
// statement is interpreted as a format string and ends before its last comma.
std::string ServerMaintenance::restoreStatement(const std::string& backupFile, const char* directory,
                                                const char* dbName,
                                                const std::vector<std::string>& logicalNames) {
    std::string text = FXString::Format(maintenance_sql::kRestore, dbName, backupFile.c_str());
    for (const std::string& row : logicalNames) {
        const std::string name = splitRow(row, m_db.separator, 1).front();
        text += FXString::Format(maintenance_sql::kMoveFile, name.c_str(), directory, name.c_str());
    }
    const std::string statement = textAsFormat(text, kStatementLength);
    return statement.substr(0, statement.rfind(','));
}

bool ServerMaintenance::reportRestore(const std::string& statement, const std::string& backupFile) {
    if (kRestoreIsSent) {
        m_db.report.report(FXString::Format(database_messages::kRestored, backupFile.c_str()));
        return true;
    }
    copyOutputToLog();
    return m_db.report.fail(FXString::Format(database_messages::kRestoreFailed, statement.c_str()));
}

// Removes the output file on success only.
bool ServerMaintenance::lastBackup(const char* dbName, char* days, char* date) {
    const std::string statement =
        cutTo(FXString::Format(maintenance_sql::kLastBackup, dbName), kStatementLength);
    std::vector<std::string> rows;
    if (!run(statement, WhenFailed::kDropOutput) || !readRows(statement, 2, rows)) return false;
    const std::vector<std::string> fields = splitRow(rows.back(), m_db.separator, 2);
    copyWhole(days, fields[0]);
    copyWhole(date, fields[1]);
    m_db.report.report(
        FXString::Format(database_messages::kLastBackup, dbName, fields[1].c_str(), fields[0].c_str()));
    FXFile::Remove(m_outputFile.c_str());
    return true;
}

// Leaves the output file behind.
std::string ServerMaintenance::productVersion() {
    const std::string statement = maintenance_sql::kProductVersion;
    std::vector<std::string> rows;
    const bool read = run(statement) && readRows(statement, 1, rows);
    return read ? rows.front() : kUnknownVersion;
}

bool ServerMaintenance::run(const std::string& statement, WhenFailed whenFailed) {
    if (claimToolOutput(m_outputFile)) {
        if (runStringQuery(m_db, statement.c_str(), m_outputFile.c_str(), maintenance_sql::kDatabase))
            return true;
        dropUnwrittenOutput(m_outputFile);
        if (whenFailed == WhenFailed::kLogOutput) copyOutputToLog();
    }
    return m_db.report.fail(FXString::Format(database_messages::kQueryFailed, statement.c_str()));
}

// An empty result is a failure, too.
bool ServerMaintenance::readRows(const std::string& statement, int fields, std::vector<std::string>& rows) {
    const bool isRead = readOwnToolOutput(m_outputFile.c_str(), m_db.separator, fields, rows, m_db.report);
    if (isRead && !rows.empty()) return true;
    m_operation.noteUnlessExplained({.where = kDVUQueryTool, .text = database_messages::kNoRow});
    return m_db.report.fail(FXString::Format(database_messages::kResultNotParsed, statement.c_str()));
}

void ServerMaintenance::copyOutputToLog() {
    if (!isOwnToolOutput(m_outputFile)) return;
    LogFileContent(m_outputFile.c_str(), m_db.report.logFile.c_str(), /*echo=*/false, /*instance=*/nullptr);
}

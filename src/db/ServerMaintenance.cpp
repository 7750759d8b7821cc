#include "ServerMaintenance.h"

#include "CallerText.h"
#include "DVUtilities/commonFunc.h"
#include "DatabaseMessages.h"
#include "FX.h"
#include "MaintenanceSql.h"
#include "RowText.h"
#include "TextAsFormat.h"
#include "ToolOutput.h"

namespace {

constexpr std::size_t kPathLength = 1023;
constexpr std::size_t kStatementLength = 4999;

// Removes a file at the end.
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

ServerMaintenance::ServerMaintenance(DBBase& db) : m_db(db) {
    std::string name;
    m_db.getTempFileName(name);
    m_outputFile = cutTo(name, kPathLength);
}

// The output file stays behind.
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
    return run(cutTo(statement, kStatementLength)) &&
           tell(FXString::Format(database_messages::kBackedUp, dbName, backupFile));
}

bool ServerMaintenance::restore(const char* backupFile, const char* directory, const char* dbName) {
    const RemovedFile output(m_outputFile);
    const std::string path = cutTo(backupFile, kPathLength);
    const std::string fileList =
        cutTo(FXString::Format(maintenance_sql::kFileList, path.c_str()), kStatementLength);
    std::vector<std::string> logicalNames;
    return run(fileList) && readRows(fileList, 1, logicalNames) &&
           sendRestore(restoreStatement(path, directory, dbName, logicalNames), path);
}

// The data files keep their logical names, put directly behind the directory: no separator, no extension. The
// whole is interpreted as a format string and ends before its last comma.
std::string ServerMaintenance::restoreStatement(const std::string& backupFile, const char* directory,
                                                const char* dbName,
                                                const std::vector<std::string>& logicalNames) {
    std::string text = FXString::Format(maintenance_sql::kRestore, dbName, backupFile.c_str());
    for (const std::string& row : logicalNames) {
        const std::string name = splitRow(row, m_db.m_separator[0], 1).front();
        text += FXString::Format(maintenance_sql::kMoveFile, name.c_str(), directory, name.c_str());
    }
    const std::string statement = textAsFormat(text, kStatementLength);
    return statement.substr(0, statement.rfind(','));
}

// Restores are built and logged but not run: createSQLFileAndExecute() always reports failure, and callers
// take the statement from the message.
bool ServerMaintenance::sendRestore(const std::string& statement, const std::string& backupFile) {
    if (m_db.createSQLFileAndExecute(statement.c_str(), m_outputFile.c_str(), maintenance_sql::kDatabase))
        return tell(FXString::Format(database_messages::kRestored, backupFile.c_str()));
    copyOutputToLog();
    return fail(FXString::Format(database_messages::kRestoreFailed, statement.c_str()));
}

// The output file is removed on success alone.
bool ServerMaintenance::lastBackup(const char* dbName, char* days, char* date) {
    const std::string statement =
        cutTo(FXString::Format(maintenance_sql::kLastBackup, dbName), kStatementLength);
    std::vector<std::string> rows;
    if (!run(statement, WhenFailed::kKeepSilent) || !readRows(statement, 2, rows)) return false;
    const std::vector<std::string> fields =
        splitRow(rows.back(), m_db.m_separator[0], 2);  // the last row wins
    copyWhole(days, fields[0]);
    copyWhole(date, fields[1]);
    tell(FXString::Format(database_messages::kLastBackup, dbName, fields[1].c_str(), fields[0].c_str()));
    FXFile::Remove(m_outputFile.c_str());
    return true;
}

// The output file stays behind.
std::string ServerMaintenance::productVersion() {
    const std::string statement = maintenance_sql::kProductVersion;
    std::vector<std::string> rows;
    const bool read = run(statement) && readRows(statement, 1, rows);
    return read ? rows.front() : kUnknownVersion;
}

bool ServerMaintenance::run(const std::string& statement, WhenFailed whenFailed) {
    if (claimToolOutput(m_outputFile)) {
        if (m_db.RunStringQuery(statement.c_str(), m_outputFile.c_str(), maintenance_sql::kDatabase))
            return true;
        dropUnwrittenOutput(m_outputFile);
        if (whenFailed == WhenFailed::kLogOutput) copyOutputToLog();
    }
    return fail(FXString::Format(database_messages::kQueryFailed, statement.c_str()));
}

// No rows are a failure as well.
bool ServerMaintenance::readRows(const std::string& statement, int fields, std::vector<std::string>& rows) {
    return (m_db.parseOutputFile(m_outputFile.data(), rows, fields) && !rows.empty()) ||
           fail(FXString::Format(database_messages::kResultNotParsed, statement.c_str()));
}

void ServerMaintenance::copyOutputToLog() {
    LogFileContent(m_outputFile.c_str(), m_db.m_logFile.c_str(), false, nullptr);
}

bool ServerMaintenance::tell(const std::string& message) {
    m_db.m_errorMessage = message;
    m_db.DBLogLine(m_db.m_errorMessage, 0);
    return true;
}

bool ServerMaintenance::fail(const std::string& message) {
    tell(message);
    return false;
}

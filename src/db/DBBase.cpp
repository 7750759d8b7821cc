#include "DVUtilities/DBBase.h"

#include <array>
#include <ctime>
#include <memory>
#include <string_view>
#include <utility>

#include "AccountDiscovery.h"
#include "CallerText.h"
#include "DVUtilities/commonFunc.h"
#include "DatabaseMessages.h"
#include "DirectQuery.h"
#include "EvDebug.h"
#include "ExceptionGuard.h"
#include "FX.h"
#include "QueryTool.h"
#include "QuoteDoubling.h"
#include "RowText.h"
#include "SecretText.h"
#include "ServerMaintenance.h"
#include "ToolOutput.h"
#include "ToolProcess.h"
#include "VTPI.h"
#include "VTSimpleDBConn.h"

namespace {

constexpr char kFirstProbe[] = "SELECT count(*) FROM ZPDBVersions";
constexpr char kZephraProbe[] = "SELECT count(*) FROM simAllZephraRel";
constexpr char kTNetProbe[] = "SELECT count(*) FROM TNet";

constexpr char kToolPath[] = "/opt/mssql-tools/bin/sqlcmd";
constexpr char kToolName[] = "sqlcmd";
constexpr std::size_t kToolPathMessageLength = 8191;

constexpr int kNoValue = -1;  // GetValue()'s answer to a failure, and to a value of -1

const char* asText(const unsigned char* sql) {
    return reinterpret_cast<const char*>(sql);
}

}  // namespace

// ---- Settings ------------------------------------------------------------------------------------------

DBBase::DBBase(bool flag) : m_flag(flag) {
    guarded([&] { m_probeQuery = kFirstProbe; });
}

DBBase::~DBBase() {
    Close();
    wipe(m_password);
}

bool DBBase::GetAccountInfo(const char* machineName, const char* controlSetName, const char* logFile,
                            const char* dbName) {
    return guarded(false, [&] {
        return AccountDiscovery(*this).findAccount(machineName, controlSetName, logFile, dbName);
    });
}

bool DBBase::GetDBUser(const char* controlSetName, const char* dbName, std::string& errorText) {
    return guarded(false,
                   [&] { return AccountDiscovery(*this).findUser(controlSetName, dbName, errorText); });
}

void DBBase::SetAccountInfo(const char* serverInstance, const char* userName, const char* password,
                            const char* logFile) {
    guarded([&] {
        m_logFile = textOrEmpty(logFile);
        m_serverInstance = textOrEmpty(serverInstance);
        m_userName = textOrEmpty(userName);
        wipe(m_password);
        m_password = textOrEmpty(password);
    });
}

void DBBase::setProductTypeZephra(int productType) {
    m_productType = productType;
    guarded([&] { m_probeQuery = productType != 0 ? kZephraProbe : kTNetProbe; });
}

bool DBBase::DBTest() {
    return SetDBValue(m_probeQuery.c_str());
}

void DBBase::DBLogLine(const std::string& line, int /*level*/) {
    LogToFile(m_logFile.c_str(), line.c_str(), false);
}

const char* DBBase::getErrorMsg() const {
    return m_errorMessage.c_str();
}

// ---- Direct connection ---------------------------------------------------------------------------------

bool DBBase::Open(char* dataSource, char* userName, char* password) {
    return guarded(false, [&] {
        const char* user = userName != nullptr ? userName : m_userName.c_str();
        EvDebug().DebugLevel(database_messages::debug::kTrace, database_messages::debug::kOpen,
                             dataSource != nullptr ? dataSource : m_dataSource, user);
        if (m_connection == nullptr) m_connection = new VTSimpleDBConnObject;
        const SecretText target(m_connection->getConnectionString(
            m_serverInstance.c_str(), m_dbName.c_str(), user,
            password != nullptr ? password : m_password.c_str(), m_windowsAuthentication, false));
        if (m_connection->OpenSQLConnectionUsingConnectionString(target.c_str(), false) == 0) return true;
        EvDebug().Debug("Open", "%s", database_messages::debug::kOpenFailed);
        return false;
    });
}

bool DBBase::Connect(char* dataSource, char* userName, char* password) {
    return Open(dataSource, userName, password);
}

bool DBBase::Close() {
    const std::unique_ptr<VTSimpleDBConnObject> connection(std::exchange(m_connection, nullptr));
    if (connection != nullptr) guarded([&] { connection->CloseSQLConnection(); });
    return true;
}

bool DBBase::ExecuteQuery(const char* sql) {
    return m_connection != nullptr &&
           guarded(false, [&] { return m_connection->executeQuery(textOrEmpty(sql), false) == 0; });
}

int DBBase::GetValue(const char* sql, char* text, wchar_t* wide) {
    if (m_connection == nullptr) return kNoValue;
    return guarded(kNoValue, [&] {
        std::string value;
        if (!readFirstValue(*m_connection, textOrEmpty(sql), value)) return kNoValue;
        if (text == nullptr && wide == nullptr) return leadingNumber(value);
        if (text != nullptr)
            copyWhole(text, value);
        else
            copyWhole(wide, wideText(value));
        return 1;
    });
}

bool DBBase::GetValue(const char* sql, std::vector<std::string>& rows, int columns) {
    return m_connection != nullptr && guarded(false, [&] {
               return readRows(*m_connection, textOrEmpty(sql), columns, m_separator[0], rows);
           });
}

// After a failed statement the connection stays open.
bool DBBase::SetDBValue(const char* sql) {
    return Open(nullptr, nullptr, nullptr) && ExecuteQuery(sql) && Close();
}

bool DBBase::GetDBValueInt(const char* sql, int& value) {
    if (!Open(nullptr, nullptr, nullptr)) return false;
    value = GetValue(sql, nullptr, nullptr);
    Close();
    return value != kNoValue;
}

// After a failed read the connection stays open.
bool DBBase::GetDBValueStr(const char* sql, char* text) {
    return Open(nullptr, nullptr, nullptr) && GetValue(sql, text, nullptr) != kNoValue && Close();
}

bool DBBase::GetDBValueStr(const char* sql, wchar_t* text) {
    return Open(nullptr, nullptr, nullptr) && GetValue(sql, nullptr, text) != kNoValue && Close();
}

bool DBBase::GetDBValueList(const char* sql, std::vector<std::string>& rows, int columns) {
    if (!Open(nullptr, nullptr, nullptr)) return false;
    rows.clear();
    return GetValue(sql, rows, columns) && Close();
}

namespace {

// The rows of a list of records, each split into `columns` fields. A failed statement is not told from one
// without rows: callers of the id lists rely on getting true and an empty list. False only when there is no
// connection.
bool readRecords(DBBase& db, const char* sql, int columns, std::vector<std::string>& rows) {
    if (!db.Open(nullptr, nullptr, nullptr)) return false;
    db.GetValue(sql, rows, columns);
    return db.Close();
}

}  // namespace

bool DBBase::GetDBValueIntList(const char* sql, std::vector<int>& values) {
    return guarded(false, [&] {
        std::vector<std::string> rows;
        if (!readRecords(*this, sql, 1, rows)) return false;
        values.clear();
        for (const std::string& row : rows)
            values.push_back(leadingNumber(splitRow(row, m_separator[0], 1)[0]));
        return true;
    });
}

bool DBBase::GetDBValueIntIntList(const char* sql, std::vector<IdId_t>& values) {
    return guarded(false, [&] {
        std::vector<std::string> rows;
        if (!readRecords(*this, sql, 2, rows)) return false;
        values.clear();
        for (const std::string& row : rows) {
            const auto fields = splitRow(row, m_separator[0], 2);
            values.push_back({leadingNumber(fields[0]), leadingNumber(fields[1])});
        }
        return true;
    });
}

bool DBBase::GetDBValueIdIdNameList(const char* sql, std::vector<IdIdName_t>& values) {
    return guarded(false, [&] {
        std::vector<std::string> rows;
        if (!readRecords(*this, sql, 3, rows)) return false;
        values.clear();
        for (const std::string& row : rows) {
            const auto fields = splitRow(row, m_separator[0], 3);
            values.push_back({leadingNumber(fields[0]), leadingNumber(fields[1]), fields[2]});
        }
        return true;
    });
}

// Unlike the id lists it reports a failed statement; the names come with their quotes doubled.
bool DBBase::GetDBValueIdName(const char* sql, std::vector<IdNameItem_t>& values) {
    return guarded(false, [&] {
        if (!Open(nullptr, nullptr, nullptr)) return false;
        values.clear();
        std::vector<std::string> rows;
        const bool read = GetValue(sql, rows, 2);
        Close();
        if (!read) return false;
        for (const std::string& row : rows) {
            const auto fields = splitRow(row, m_separator[0], 2);
            std::array<char, 2 * kFieldSize> name{};  // room for a second quote to each
            copyCut(name.data(), name.size(), fields[1]);
            fixTheString(name.data());
            values.push_back({leadingNumber(fields[0]), name.data()});
        }
        return true;
    });
}

// Statements given as unsigned char are the same statements.
bool DBBase::ExecuteQuery(const unsigned char* sql) {
    return ExecuteQuery(asText(sql));
}
int DBBase::GetValue(const unsigned char* sql, char* text, wchar_t* wide) {
    return GetValue(asText(sql), text, wide);
}
bool DBBase::GetValue(const unsigned char* sql, std::vector<std::string>& rows, int columns) {
    return GetValue(asText(sql), rows, columns);
}
bool DBBase::SetDBValue(const unsigned char* sql) {
    return SetDBValue(asText(sql));
}
bool DBBase::GetDBValueInt(const unsigned char* sql, int& value) {
    return GetDBValueInt(asText(sql), value);
}
bool DBBase::GetDBValueStr(const unsigned char* sql, char* text) {
    return GetDBValueStr(asText(sql), text);
}
bool DBBase::GetDBValueStr(const unsigned char* sql, wchar_t* text) {
    return GetDBValueStr(asText(sql), text);
}
bool DBBase::GetDBValueList(const unsigned char* sql, std::vector<std::string>& rows, int columns) {
    return GetDBValueList(asText(sql), rows, columns);
}
bool DBBase::GetDBValueIntList(const unsigned char* sql, std::vector<int>& values) {
    return GetDBValueIntList(asText(sql), values);
}
bool DBBase::GetDBValueIntIntList(const unsigned char* sql, std::vector<IdId_t>& values) {
    return GetDBValueIntIntList(asText(sql), values);
}
bool DBBase::GetDBValueIdIdNameList(const unsigned char* sql, std::vector<IdIdName_t>& values) {
    return GetDBValueIdIdNameList(asText(sql), values);
}
bool DBBase::GetDBValueIdName(const unsigned char* sql, std::vector<IdNameItem_t>& values) {
    return GetDBValueIdName(asText(sql), values);
}

namespace {

// `count` pointers to buffers of one field each.
template <typename Char>
Char** newFields(std::size_t count) {
    std::vector<std::unique_ptr<Char[]>> buffers(count);
    for (auto& buffer : buffers) buffer = std::make_unique<Char[]>(kFieldSize);
    auto** fields = new Char*[count];
    for (std::size_t i = 0; i < count; ++i) fields[i] = buffers[i].release();
    return fields;
}

template <typename Char>
void parseInto(std::basic_string_view<Char> row, Char separator, Char**& fields, int count) {
    guarded([&] {
        const auto values = splitRow(row, separator, count);
        if (fields == nullptr) fields = newFields<Char>(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) copyCut<Char>(fields[i], kFieldSize, values[i]);
    });
}

template <typename Char>
void releaseFields(Char**& fields, int count) {
    if (fields == nullptr) return;
    for (int i = 0; i < count && fields[i] != nullptr; ++i) delete[] fields[i];
    delete[] fields;
    fields = nullptr;
}

}  // namespace

void DBBase::parseRecord(const char* row, char**& fields, int fieldCount) {
    parseInto<char>(textOrEmpty(row), m_separator[0], fields, fieldCount);
}

void DBBase::parseRecord(const wchar_t* row, wchar_t**& fields, int fieldCount) {
    parseInto<wchar_t>(row != nullptr ? row : L"", m_wideSeparator[0], fields, fieldCount);
}

void DBBase::cleanupRecord(char**& fields, int fieldCount) {
    releaseFields(fields, fieldCount);
}
void DBBase::cleanupRecord(wchar_t**& fields, int fieldCount) {
    releaseFields(fields, fieldCount);
}

void DBBase::fixTheString(char* text) {
    ReplaceString(text, "'", "''");
}

void DBBase::fixTheString(std::string& text) {
    guarded([&] { doubleQuotes(text); });
}

void DBBase::ReplaceString(char* text, const char* find, const char* replacement) {
    if (text != nullptr) replaceInPlace(text, textOrEmpty(find), textOrEmpty(replacement));
}

// ---- Query tool ----------------------------------------------------------------------------------------

// The details of a failure are in the debug log; the log file gets an empty line.
bool DBBase::StartProcess(const char* commandLine, unsigned int timeout) {
    return guarded(false, [&] {
        const ProcessEnd end = runProcess(textOrEmpty(commandLine), timeout);
        if (end == ProcessEnd::kFailed) DBLogLine("", 0);
        return end == ProcessEnd::kSucceeded;
    });
}

bool DBBase::RunFileQuery(const char* sqlFile, const char* outputFile, const char* dbName, bool toolSyntax,
                          bool errorLevel) {
    return guarded(false, [&] {
        QueryTool tool(*this, outputFile, toolSyntax ? kToolName : nullptr);
        const ToolInput input = tool.input(sqlFile, dbName);
        return tool.run(
            toolSyntax ? fileCommand(tool.login(), input, errorLevel) : plainFileCommand(tool.login(), input),
            database_messages::kScriptFailed);
    });
}

bool DBBase::RunFileQuery_TS(const char* sqlFile, const char* outputFile, const char* dbName, int options) {
    return guarded(false, [&] {
        QueryTool tool(*this, outputFile, kToolName);
        return tool.run(scriptFileCommand(tool.login(), tool.input(sqlFile, dbName), options),
                        database_messages::kScriptFailed);
    });
}

bool DBBase::RunStringQuery(const char* sql, const char* outputFile, const char* dbName) {
    return guarded(false, [&] {
        QueryTool tool(*this, outputFile, nullptr);
        return tool.run(stringCommand(tool.login(), tool.input(sql, dbName)),
                        database_messages::kStringScriptFailed);
    });
}

bool DBBase::RunStringQuery_TS(const char* sql, const char* outputFile, const char* dbName, int options) {
    return guarded(false, [&] {
        QueryTool tool(*this, outputFile, kToolName);
        return tool.run(scriptStringCommand(tool.login(), tool.input(sql, dbName), options),
                        database_messages::kScriptFailed);
    });
}

bool DBBase::generateCSVOutput(const char* sqlFile, const char* outputFile, const char* dbName,
                               const char* separator) {
    return guarded(false, [&] {
        QueryTool tool(*this, outputFile, kToolName);
        return tool.run(csvCommand(tool.login(), tool.input(sqlFile, dbName), separator),
                        database_messages::kScriptFailed);
    });
}

// Told once an object; the fallback name would serve only if there were no default path.
void DBBase::getSQLPath(const char* fallbackTool) {
    if (!m_toolPath.empty()) return;
    guarded([&] {
        m_toolPath = kToolPath;
        if (m_toolPath.empty()) m_toolPath = fallbackTool != nullptr ? fallbackTool : kToolName;
        DBLogLine(
            cutTo(FXString::Format(database_messages::kToolPath, m_toolPath.c_str()), kToolPathMessageLength),
            0);
    });
}

// Two calls within a second yield the same name; callers that may run together pass names of their own.
void DBBase::getTempFileName(std::string& name) {
    guarded([&] {
        const VTPI_Base installation;
        name = FXString::Format("%s/sqlFile_%lld.txt", installation.getZephraTempDirectory().c_str(),
                                static_cast<long long>(std::time(nullptr)));
    });
}

bool DBBase::parseOutputFile(char* outputFile, std::vector<std::string>& rows, int fieldCount) {
    return guarded(false, [&] {
        if (readToolOutput(textOrEmpty(outputFile), m_separator[0], fieldCount, rows)) return true;
        m_errorMessage = FXString::Format(database_messages::kOutputNotOpened, textOrEmpty(outputFile));
        DBLogLine(m_errorMessage, 0);
        return false;
    });
}

bool DBBase::createSQLFileAndExecute(const char* /*sql*/, const char* /*outputFile*/,
                                     const char* /*dbName*/) {
    return false;
}

bool DBBase::createSQLFileAndGenerateCSVOutput(const char* /*sql*/, const char* /*outputFile*/,
                                               const char* /*dbName*/, const char* /*separator*/) {
    return false;
}

// ---- Server maintenance --------------------------------------------------------------------------------

std::vector<std::string> DBBase::getDBList() {
    return guarded(std::vector<std::string>(), [&] { return ServerMaintenance(*this).databaseList(); });
}

bool DBBase::backUpDB(const char* backupFile, const char* directory, const char* dbName) {
    return guarded(false, [&] {
        return ServerMaintenance(*this).backUp(textOrEmpty(backupFile), textOrEmpty(directory),
                                               textOrEmpty(dbName));
    });
}

bool DBBase::restoreDB(const char* backupFile, const char* directory, const char* dbName) {
    return guarded(false, [&] {
        return ServerMaintenance(*this).restore(textOrEmpty(backupFile), textOrEmpty(directory),
                                                textOrEmpty(dbName));
    });
}

bool DBBase::getLastBackUpInfo(const char* dbName, char* days, char* date) {
    return guarded(false,
                   [&] { return ServerMaintenance(*this).lastBackup(textOrEmpty(dbName), days, date); });
}

std::string DBBase::checkSQLServerProductVersion() {
    return guarded(std::string(kUnknownVersion), [&] { return ServerMaintenance(*this).productVersion(); });
}

namespace {

// What the exported functions below have in common: an object for that server, no configuration read.
template <typename Operation>
bool onServer(const char* serverInstance, const char* userName, const char* password, const char* logFile,
              std::string& errorText, Operation operation) {
    return guarded(false, [&] {
        DBBase db(true);
        db.setProductTypeZephra(1);
        db.SetAccountInfo(serverInstance, userName, password, logFile);
        const bool succeeded = operation(db);
        if (!succeeded) errorText = db.getErrorMsg();
        return succeeded;
    });
}

}  // namespace

bool GetDatabaseList(const char* serverInstance, const char* userName, const char* password,
                     const char* logFile, std::string& errorText, std::vector<std::string>& names) {
    return onServer(serverInstance, userName, password, logFile, errorText, [&](DBBase& db) {
        names = db.getDBList();
        return !names.empty();
    });
}

bool RestoreDatabase(const char* backupFile, const char* directory, const char* dbName,
                     const char* serverInstance, const char* userName, const char* password,
                     const char* logFile, std::string& errorText) {
    return onServer(serverInstance, userName, password, logFile, errorText,
                    [&](DBBase& db) { return db.restoreDB(backupFile, directory, dbName); });
}

#include "DVUtilities/DBBase.h"

#include <array>
#include <memory>
#include <string_view>

#include "AccountDiscovery.h"
#include "CallerText.h"
#include "Causes.h"
#include "DVUtilities/commonFunc.h"
#include "ExceptionGuard.h"
#include "QuoteDoubling.h"
#include "RowText.h"
#include "SecretText.h"
#include "ServerMaintenance.h"
#include "direct/DirectConnection.h"
#include "direct/DirectQuery.h"
#include "parts/DatabaseMessages.h"
#include "parts/DatabaseParts.h"
#include "querytool/QueryTool.h"
#include "querytool/ToolOutput.h"

namespace {

constexpr char kFirstProbe[] = "SELECT count(*) FROM ZPDBVersions";
constexpr char kZephraProbe[] = "SELECT count(*) FROM simAllZephraRel";
constexpr char kTNetProbe[] = "SELECT count(*) FROM TNet";

constexpr int kNoValue = -1;  // GetValue()'s result for a failure; a value of -1 looks the same
constexpr bool kUnusedFlag = true;

const char* asText(const unsigned char* sql) {
    return reinterpret_cast<const char*>(sql);
}

// Returns `failure`.
template <typename Result>
Result noteNotOpen(Result failure) {
    noteCause({.where = kDVUConnection, .text = database_messages::kNotOpen});
    return failure;
}

int noteFailureValue(int value) {
    if (value == kNoValue) noteCause({.where = kDVUStatement, .text = database_messages::kFailureValue});
    return value;
}

}  // namespace

void DVU_GetCauses(const DBBase& db, std::vector<DVUCause_t>& causes) {
    causes.clear();
    if (db.m_causes != nullptr) guarded([&] { causes = db.m_causes->causes; });
}

DatabaseParts partsOf(DBBase& db) {
    return {.machineName = db.m_machineName,
            .logFile = db.m_logFile,
            .account = {.dataSource = db.m_dataSource,
                        .serverInstance = db.m_serverInstance,
                        .userName = db.m_userName,
                        .password = db.m_password,
                        .dbName = db.m_dbName,
                        .windowsAuthentication = db.m_windowsAuthentication},
            .productType = db.m_productType,
            // In the order of DatabaseKind.
            .kindFlags = {&db.m_dorvas, &db.m_nq2, &db.m_vtCloud, &db.m_wfEngine, &db.m_historyDB},
            .probeQuery = db.m_probeQuery,
            .connection = db.m_connection,
            .toolPath = db.m_toolPath,
            .report = {.message = db.m_errorMessage, .logFile = db.m_logFile},
            .separator = db.m_separator[0]};
}

// ---- Settings ------------------------------------------------------------------------------------------

DBBase::DBBase(bool flag) : m_flag(flag) {
    guarded([&] { m_probeQuery = kFirstProbe; });
}

DBBase::~DBBase() {
    Close();
    wipe(m_password);
    delete m_causes;
}

bool DBBase::GetAccountInfo(const char* machineName, const char* controlSetName, const char* logFile,
                            const char* dbName) {
    return collected(m_causes, false, [&] {
        return AccountDiscovery(partsOf(*this)).findAccount(machineName, controlSetName, logFile, dbName);
    });
}

bool DBBase::GetDBUser(const char* controlSetName, const char* dbName, std::string& errorText) {
    return collected(m_causes, false, [&] {
        return AccountDiscovery(partsOf(*this)).findUser(controlSetName, dbName, errorText);
    });
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
    LogToFile(m_logFile.c_str(), line.c_str(), /*raw=*/false);
}

const char* DBBase::getErrorMsg() const {
    return m_errorMessage.c_str();
}

// ---- Direct connection ---------------------------------------------------------------------------------

bool DBBase::Open(char* dataSource, char* userName, char* password) {
    return collected(m_causes, false, [&] {
        return DirectConnection(partsOf(*this).account, m_connection).open(dataSource, userName, password);
    });
}

bool DBBase::Connect(char* dataSource, char* userName, char* password) {
    return Open(dataSource, userName, password);
}

bool DBBase::Close() {
    guarded([&] { DirectConnection(partsOf(*this).account, m_connection).close(); });
    return true;
}

bool DBBase::ExecuteQuery(const char* sql) {
    return collected(m_causes, false, [&] {
        return DirectConnection(partsOf(*this).account, m_connection).execute(textOrEmpty(sql));
    });
}

int DBBase::GetValue(const char* sql, char* text, wchar_t* wide) {
    return collected(m_causes, kNoValue, [&] {
        if (m_connection == nullptr) return noteNotOpen(kNoValue);
        std::string value;
        if (!readFirstValue(*m_connection, textOrEmpty(sql), value)) return kNoValue;
        if (text == nullptr && wide == nullptr) return noteFailureValue(leadingNumber(value));
        if (text != nullptr)
            copyWhole(text, value);
        else
            copyWhole(wide, wideText(value));
        return 1;
    });
}

bool DBBase::GetValue(const char* sql, std::vector<std::string>& rows, int columns) {
    return collected(m_causes, false, [&] {
        if (m_connection == nullptr) return noteNotOpen(false);
        return readRows(*m_connection, textOrEmpty(sql), columns, m_separator[0], rows);
    });
}

bool DBBase::SetDBValue(const char* sql) {
    return collected(m_causes, false, [&] {
        return DirectConnection(partsOf(*this).account, m_connection).executeOnce(textOrEmpty(sql));
    });
}

bool DBBase::GetDBValueInt(const char* sql, int& value) {
    return collected(m_causes, false, [&] {
        if (!Open(nullptr, nullptr, nullptr)) return false;
        value = GetValue(sql, nullptr, nullptr);
        Close();
        return value != kNoValue;
    });
}

// After a failed read the connection stays open.
bool DBBase::GetDBValueStr(const char* sql, char* text) {
    return collected(m_causes, false, [&] {
        return Open(nullptr, nullptr, nullptr) && GetValue(sql, text, nullptr) != kNoValue && Close();
    });
}

bool DBBase::GetDBValueStr(const char* sql, wchar_t* text) {
    return collected(m_causes, false, [&] {
        return Open(nullptr, nullptr, nullptr) && GetValue(sql, nullptr, text) != kNoValue && Close();
    });
}

bool DBBase::GetDBValueList(const char* sql, std::vector<std::string>& rows, int columns) {
    return collected(m_causes, false, [&] {
        if (!Open(nullptr, nullptr, nullptr)) return false;
        rows.clear();
        return GetValue(sql, rows, columns) && Close();
    });
}

namespace {

// Reads the row texts of a list and adds each to `values` by `append`. True with no rows after a failed
// statement, too: callers of the id lists rely on it. False only when the connection cannot be opened. `kept`
// receives the causes of either.
template <typename Value, typename Append>
bool readRecords(DBBase& db, DVUCauseList*& kept, const char* sql, int columns, std::vector<Value>& values,
                 Append append) {
    CauseCollector collector;
    bool isRead = false;
    const bool isOpened = guarded(false, [&] {
        std::vector<std::string> rows;
        if (!db.Open(nullptr, nullptr, nullptr)) return false;
        isRead = db.GetValue(sql, rows, columns);
        db.Close();
        values.clear();
        for (const std::string& row : rows) append(row);
        return true;
    });
    collector.keepIn(kept, !isOpened || !isRead);
    return isOpened;
}

}  // namespace

bool DBBase::GetDBValueIntList(const char* sql, std::vector<int>& values) {
    return readRecords(*this, m_causes, sql, 1, values, [&](const std::string& row) {
        values.push_back(leadingNumber(splitRow(row, m_separator[0], 1)[0]));
    });
}

bool DBBase::GetDBValueIntIntList(const char* sql, std::vector<IdId_t>& values) {
    return readRecords(*this, m_causes, sql, 2, values, [&](const std::string& row) {
        const auto fields = splitRow(row, m_separator[0], 2);
        values.push_back({leadingNumber(fields[0]), leadingNumber(fields[1])});
    });
}

bool DBBase::GetDBValueIdIdNameList(const char* sql, std::vector<IdIdName_t>& values) {
    return readRecords(*this, m_causes, sql, 3, values, [&](const std::string& row) {
        const auto fields = splitRow(row, m_separator[0], 3);
        values.push_back({leadingNumber(fields[0]), leadingNumber(fields[1]), fields[2]});
    });
}

// Unlike the id lists, reports a failed statement.
bool DBBase::GetDBValueIdName(const char* sql, std::vector<IdNameItem_t>& values) {
    return collected(m_causes, false, [&] {
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

bool DBBase::ExecuteQuery(unsigned char* sql) {
    return ExecuteQuery(asText(sql));
}
int DBBase::GetValue(unsigned char* sql, char* text, wchar_t* wide) {
    return GetValue(asText(sql), text, wide);
}
bool DBBase::GetValue(unsigned char* sql, std::vector<std::string>& rows, int columns) {
    return GetValue(asText(sql), rows, columns);
}
bool DBBase::SetDBValue(unsigned char* sql) {
    return SetDBValue(asText(sql));
}
bool DBBase::GetDBValueInt(unsigned char* sql, int& value) {
    return GetDBValueInt(asText(sql), value);
}
bool DBBase::GetDBValueStr(unsigned char* sql, char* text) {
    return GetDBValueStr(asText(sql), text);
}
bool DBBase::GetDBValueStr(unsigned char* sql, wchar_t* text) {
    return GetDBValueStr(asText(sql), text);
}
bool DBBase::GetDBValueList(unsigned char* sql, std::vector<std::string>& rows, int columns) {
    return GetDBValueList(asText(sql), rows, columns);
}
bool DBBase::GetDBValueIntList(unsigned char* sql, std::vector<int>& values) {
    return GetDBValueIntList(asText(sql), values);
}
bool DBBase::GetDBValueIntIntList(unsigned char* sql, std::vector<IdId_t>& values) {
    return GetDBValueIntIntList(asText(sql), values);
}
bool DBBase::GetDBValueIdIdNameList(unsigned char* sql, std::vector<IdIdName_t>& values) {
    return GetDBValueIdIdNameList(asText(sql), values);
}
bool DBBase::GetDBValueIdName(unsigned char* sql, std::vector<IdNameItem_t>& values) {
    return GetDBValueIdName(asText(sql), values);
}

namespace {

// Allocates `count` buffers of one field each.
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

bool DBBase::StartProcess(const char* commandLine, unsigned int timeout) {
    return collected(m_causes, false,
                     [&] { return runLogged(textOrEmpty(commandLine), timeout, partsOf(*this).report); });
}

bool DBBase::RunFileQuery(const char* sqlFile, const char* outputFile, const char* dbName, bool toolSyntax,
                          bool errorLevel) {
    return collected(m_causes, false, [&] {
        QueryTool tool(partsOf(*this), outputFile, toolSyntax ? kToolName : nullptr);
        const ToolInput input = tool.input(sqlFile, dbName);
        return tool.run(
            input,
            toolSyntax ? fileCommand(tool.login(), input, errorLevel) : plainFileCommand(tool.login(), input),
            database_messages::kScriptFailed);
    });
}

bool DBBase::RunFileQuery_TS(const char* sqlFile, const char* outputFile, const char* dbName, int options) {
    return collected(m_causes, false, [&] {
        QueryTool tool(partsOf(*this), outputFile, kToolName);
        const ToolInput input = tool.input(sqlFile, dbName);
        return tool.run(input, scriptFileCommand(tool.login(), input, options),
                        database_messages::kScriptFailed);
    });
}

bool DBBase::RunStringQuery(const char* sql, const char* outputFile, const char* dbName) {
    return collected(m_causes, false,
                     [&] { return runStringQuery(partsOf(*this), sql, outputFile, dbName); });
}

bool DBBase::RunStringQuery_TS(const char* sql, const char* outputFile, const char* dbName, int options) {
    return collected(m_causes, false, [&] {
        QueryTool tool(partsOf(*this), outputFile, kToolName);
        const ToolInput input = tool.input(sql, dbName);
        return tool.run(input, scriptStringCommand(tool.login(), input, options),
                        database_messages::kScriptFailed);
    });
}

bool DBBase::generateCSVOutput(const char* sqlFile, const char* outputFile, const char* dbName,
                               const char* separator) {
    return collected(m_causes, false, [&] {
        QueryTool tool(partsOf(*this), outputFile, kToolName);
        const ToolInput input = tool.input(sqlFile, dbName, separator);
        return tool.run(input, csvCommand(tool.login(), input), database_messages::kScriptFailed);
    });
}

void DBBase::getSQLPath(const char* fallbackTool) {
    guarded([&] { chooseToolPath(m_toolPath, fallbackTool, partsOf(*this).report); });
}

void DBBase::getTempFileName(std::string& name) {
    guarded([&] { name = temporaryOutputPath(); });
}

bool DBBase::parseOutputFile(char* outputFile, std::vector<std::string>& rows, int fieldCount) {
    return collected(m_causes, false, [&] {
        return readToolOutput(textOrEmpty(outputFile), m_separator[0], fieldCount, rows,
                              partsOf(*this).report);
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
    return collected(m_causes, std::vector<std::string>(),
                     [&] { return ServerMaintenance(partsOf(*this)).databaseList(); });
}

bool DBBase::backUpDB(const char* backupFile, const char* directory, const char* dbName) {
    return collected(m_causes, false, [&] {
        return ServerMaintenance(partsOf(*this))
            .backUp(textOrEmpty(backupFile), textOrEmpty(directory), textOrEmpty(dbName));
    });
}

bool DBBase::restoreDB(const char* backupFile, const char* directory, const char* dbName) {
    return collected(m_causes, false, [&] {
        return ServerMaintenance(partsOf(*this))
            .restore(textOrEmpty(backupFile), textOrEmpty(directory), textOrEmpty(dbName));
    });
}

bool DBBase::getLastBackUpInfo(const char* dbName, char* days, char* date) {
    return collected(m_causes, false, [&] {
        return ServerMaintenance(partsOf(*this)).lastBackup(textOrEmpty(dbName), days, date);
    });
}

std::string DBBase::checkSQLServerProductVersion() {
    return collected(m_causes, std::string(kUnknownVersion),
                     [&] { return ServerMaintenance(partsOf(*this)).productVersion(); });
}

namespace {

// Runs an operation on an object for that server, without reading the configuration.
template <typename Operation>
bool onServer(const char* serverInstance, const char* userName, const char* password, const char* logFile,
              std::string& errorText, Operation operation) {
    return guarded(false, [&] {
        DBBase db(kUnusedFlag);
        db.setProductTypeZephra(kZephra);
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

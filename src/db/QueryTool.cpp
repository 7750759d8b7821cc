#include "QueryTool.h"

#include <utility>

#include "CallerText.h"
#include "DatabaseMessages.h"
#include "FX.h"
#include "SecretText.h"
#include "ToolMessages.h"
#include "ToolOutput.h"
#include "ToolProcess.h"
#include "VtProcess.h"

namespace {
constexpr char kDefaultTool[] = "/opt/mssql-tools/bin/sqlcmd";
constexpr std::size_t kToolPathMessageLength = 8191;
}  // namespace

QueryTool::QueryTool(const DatabaseParts& db, const char* outputFile, const char* fallbackTool)
    : m_db(db),
      m_outputFile(outputFile != nullptr ? outputFile : temporaryOutputPath()),
      m_temporary(outputFile == nullptr) {
    chooseToolPath(m_db.toolPath, fallbackTool, m_db.report);
}

ToolLogin QueryTool::login() const {
    const ServerAccount& account = m_db.account;
    return {m_db.toolPath.c_str(), account.serverInstance.c_str(), account.userName.c_str(),
            account.password.c_str(), account.windowsAuthentication};
}

bool QueryTool::run(std::string command, const char* whenFailed) {
    const SecretText commandLine(std::move(command));
    const bool claimed = !m_temporary || claimToolOutput(m_outputFile);
    if (claimed && runLogged(commandLine.c_str(), VtProcess::kNoTimeout, m_db.report)) return true;
    if (claimed) noteToolMessages(m_outputFile);
    if (claimed && m_temporary) dropUnwrittenOutput(m_outputFile);
    return m_db.report.fail(whenFailed);
}

bool runStringQuery(const DatabaseParts& db, const char* sql, const char* outputFile, const char* dbName) {
    QueryTool tool(db, outputFile, nullptr);
    return tool.run(stringCommand(tool.login(), tool.input(sql, dbName)),
                    database_messages::kStringScriptFailed);
}

// The fallback would serve only if there were no default path.
void chooseToolPath(std::string& toolPath, const char* fallbackTool, const DatabaseReport& report) {
    if (!toolPath.empty()) return;
    toolPath = kDefaultTool;
    if (toolPath.empty()) toolPath = fallbackTool != nullptr ? fallbackTool : kToolName;
    report.log(
        cutTo(FXString::Format(database_messages::kToolPath, toolPath.c_str()), kToolPathMessageLength));
}

bool runLogged(const char* commandLine, unsigned int timeout, const DatabaseReport& report) {
    const ProcessEnd end = runProcess(commandLine, timeout);
    if (end == ProcessEnd::kFailed) report.log("");
    return end == ProcessEnd::kSucceeded;
}

#include "querytool/QueryTool.h"

#include <cstring>
#include <utility>

#include "CallerText.h"
#include "Causes.h"
#include "FX.h"
#include "SecretText.h"
#include "VtProcess.h"
#include "parts/DatabaseMessages.h"
#include "querytool/ToolMessages.h"
#include "querytool/ToolOutput.h"
#include "querytool/ToolProcess.h"

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

// Names the argument with the quote, not its value: it may be the password.
bool QueryTool::refuseQuote(const ToolInput& input) const {
    const ToolLogin account = login();
    const struct {
        const char *name, *value;
    } arguments[] = {{"the statement or its file", input.sql}, {"the output file", input.outputFile},
                     {"the database", input.dbName},           {"the column separator", input.separator},
                     {"the server", account.serverInstance},   {"the user name", account.userName},
                     {"the password", account.password}};
    for (const auto& argument : arguments) {
        if (std::strchr(textOrEmpty(argument.value), '"') == nullptr) continue;
        reportCause({.where = kDVUQueryTool,
                     .text = FXString::Format(database_messages::kQuoteInArgument, argument.name)});
        return true;
    }
    return false;
}

// The run counts as a success all the same: callers rely on the exit code alone.
void QueryTool::reportUnwritten() const {
    reportCause({.where = kDVUQueryTool,
                 .exitCode = 0,
                 .subject = m_db.toolPath,
                 .text = FXString::Format(database_messages::kNothingWritten, m_outputFile.c_str())});
}

bool QueryTool::run(const ToolInput& input, std::string command, const char* whenFailed) {
    const SecretText commandLine(std::move(command));
    if (refuseQuote(input)) return m_db.report.fail(whenFailed);
    const bool claimed = !m_temporary || claimToolOutput(m_outputFile);
    const OutputWatch output(m_outputFile);
    if (claimed && runLogged(commandLine.c_str(), VtProcess::kNoTimeout, m_db.report)) {
        if (output.isUnwritten()) reportUnwritten();
        return true;
    }
    if (claimed && !output.isUnwritten()) noteToolMessages(m_outputFile);  // not those of an earlier run
    if (claimed && m_temporary) dropUnwrittenOutput(m_outputFile);
    return m_db.report.fail(whenFailed);
}

bool runStringQuery(const DatabaseParts& db, const char* sql, const char* outputFile, const char* dbName) {
    QueryTool tool(db, outputFile, nullptr);
    const ToolInput input = tool.input(sql, dbName);
    return tool.run(input, stringCommand(tool.login(), input), database_messages::kStringScriptFailed);
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

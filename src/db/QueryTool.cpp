#include "QueryTool.h"

#include <utility>

#include "CallerText.h"
#include "SecretText.h"
#include "ToolOutput.h"
#include "VtProcess.h"

QueryTool::QueryTool(DBBase& db, const char* outputFile, const char* fallbackTool)
    : m_db(db), m_outputFile(textOrEmpty(outputFile)), m_temporary(outputFile == nullptr) {
    if (m_temporary) m_db.getTempFileName(m_outputFile);
    m_db.getSQLPath(fallbackTool);
}

ToolLogin QueryTool::login() const {
    return {m_db.m_toolPath.c_str(), m_db.m_serverInstance.c_str(), m_db.m_userName.c_str(),
            m_db.m_password.c_str(), m_db.m_windowsAuthentication};
}

bool QueryTool::run(std::string command, const char* whenFailed) {
    const SecretText commandLine(std::move(command));
    const bool claimed = !m_temporary || claimToolOutput(m_outputFile);
    if (claimed && m_db.StartProcess(commandLine.c_str(), VtProcess::kNoTimeout)) return true;
    if (claimed && m_temporary) dropUnwrittenOutput(m_outputFile);
    m_db.m_errorMessage = whenFailed;
    m_db.DBLogLine(m_db.m_errorMessage, 0);
    return false;
}

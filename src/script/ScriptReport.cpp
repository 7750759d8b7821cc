#include "ScriptReport.h"

#include <utility>

#include "CVoFile.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/TScript.h"
#include "OutputReader.h"
#include "ScriptMessages.h"

void ScriptReport::set(std::string message) {
    message.swap(m_script.m_errorMessage);  // an assignment would keep the memory of a long tool output
}

void ScriptReport::log(std::string message) {
    set(std::move(message));
    writeLog(m_script.m_errorMessage.c_str());
}

bool ScriptReport::report(std::string message) {
    set(std::move(message));
    tell(m_script.m_errorMessage);
    writeLog(m_script.m_errorMessage.c_str());
    return false;
}

bool ScriptReport::reportAs(std::string_view userText, std::string message) {
    tell(userText);
    log(std::move(message));
    return false;
}

void ScriptReport::conclude(std::string message) {
    log(std::move(message));
    m_script.m_output.append("\n").append(m_script.m_errorMessage);
}

void ScriptReport::trace(const std::string& message) {
    writeLog(message.c_str());
}

void ScriptReport::toolOutput(CVoFile& outputFile, std::size_t chunk, bool lastMessage) {
    // Gathered where it is to stand in the end, behind a heading that only the message has: a long text is
    // not copied for it.
    const std::size_t begin = m_script.m_output.size();
    const std::string_view heading = messages::kToolOutput;
    std::string text = m_script.m_output;
    readRest(outputFile, m_script.m_outputFile, chunk, text.append(heading));
    if (text.size() == begin + heading.size()) return;
    writeLog(text.c_str() + begin);
    if (lastMessage) set(text.substr(begin));
    m_script.m_output = std::move(text.erase(begin, heading.size()));
}

bool ScriptReport::hasSession() {
    if (m_script.m_db != nullptr && m_script.m_util != nullptr) return true;
    return report(messages::kNoSession);
}

void ScriptReport::tell(std::string_view userText) {
    m_script.m_output.append("\n").append(userText).append("\n");
}

void ScriptReport::writeLog(const char* message) {
    if (m_script.m_util == nullptr) return;
    m_script.m_util->LogTScript(m_script.m_logFile.c_str(), m_script.m_dbName.c_str(),
                                m_script.m_scriptName.c_str(), message);
}

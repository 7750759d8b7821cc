#include "ScriptReport.h"

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

void ScriptReport::toolOutput(CVoFile& outputFile, std::size_t chunk) {
    // Gathered behind its heading, so that the text stands in memory twice at most: here and in the output.
    std::string message = messages::kToolOutput;
    const std::size_t heading = message.size();
    readRest(outputFile, m_script.m_outputFile, chunk, message);
    if (message.size() == heading) return;
    log(std::move(message));
    m_script.m_output.append(m_script.m_errorMessage, heading);
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

#include "state/ScriptReport.h"

#include "CVoFile.h"
#include "DVUtilities/DVUtilLib.h"
#include "files/OutputReader.h"
#include "text/ScriptMessages.h"

void ScriptReport::set(std::string message) {
    message.swap(m_messages.last);  // an assignment would keep the memory of a long tool output
}

void ScriptReport::log(std::string message) {
    set(std::move(message));
    writeLog(m_messages.last.c_str());
}

void ScriptReport::report(std::string message) {
    set(std::move(message));
    appendLine(m_messages.last);
    writeLog(m_messages.last.c_str());
}

void ScriptReport::reportLast(std::string message) {
    log(std::move(message));
    m_messages.output.append("\n").append(m_messages.last);
}

bool ScriptReport::fail(std::string message) {
    report(std::move(message));
    return false;
}

bool ScriptReport::failAs(std::string_view userText, std::string message) {
    appendLine(userText);
    log(std::move(message));
    return false;
}

void ScriptReport::trace(const std::string& message) {
    writeLog(message.c_str());
}

void ScriptReport::toolOutput(CVoFile& outputFile, const std::string& path, std::size_t chunk,
                              bool lastMessage) {
    // The text is read to its final place behind the output, after a heading that only the message has: a
    // long text is not copied for it.
    const std::size_t begin = m_messages.output.size();
    const std::string_view heading = messages::kToolOutput;
    std::string text = m_messages.output;
    readRest(outputFile, path, chunk, text.append(heading));
    if (text.size() == begin + heading.size()) return;
    writeLog(text.c_str() + begin);
    if (lastMessage) set(text.substr(begin));
    m_messages.output = std::move(text.erase(begin, heading.size()));
}

bool ScriptReport::requireSession() {
    return (m_session.db != nullptr && m_session.util != nullptr) || fail(messages::kNoSession);
}

void ScriptReport::reportBrokenOff() {
    report(messages::kBrokenOff);
}

void ScriptReport::appendLine(std::string_view userText) {
    m_messages.output.append("\n").append(userText).append("\n");
}

void ScriptReport::writeLog(const char* message) {
    if (m_session.util == nullptr) return;
    m_session.util->LogTScript(m_session.logFile.c_str(), m_session.dbName.c_str(),
                               m_session.scriptName.c_str(), message);
}

#include "SqlFileRun.h"

#include <fcntl.h>

#include "CallerText.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/TScript.h"
#include "FX.h"
#include "ScriptFileNames.h"
#include "ScriptMessages.h"
#include "SqlQuotes.h"
#include "UniqueFile.h"

namespace {

constexpr std::string_view kPrefix = "SET ARITHABORT ON \nGO \n";
constexpr std::size_t kOutputChunk = 4095;
enum ExecStatus { kExecSucceeded = 1, kExecFailed = 2 };

}  // namespace

SqlFileRun::SqlFileRun(TScript& script, std::vector<std::string> parameters, const char* recordedInput)
    : m_script(script),
      m_report(script),
      m_parameters(std::move(parameters)),
      m_recordedInput(textOrEmpty(recordedInput)) {}

bool SqlFileRun::run() {
    if (!m_report.hasSession()) return false;
    readKeepSetting();
    if (!createSqlFile() || !writeSqlFile() || !recordStart()) return false;
    if (!createOutputFile()) return endWithoutOutput();
    runQueryTool();
    recordEnd();
    collectOutput();
    return !m_failed;
}

void SqlFileRun::readKeepSetting() {
    if (!m_script.m_util->GetRegItemValue(m_script.m_instanceName.c_str(), "Database", "dUTILKEEPSQLFILE",
                                          nullptr, &m_keepSqlFile)) {
        m_keepSqlFile = 0;
    }
}

bool SqlFileRun::createSqlFile() {
    // Unless it is to be kept, the last path tried goes in the end, even one that could not be created and
    // belongs to somebody else: callers rely on this one rule.
    const bool created = createUnique(
        m_sqlFile, O_WRONLY, m_sqlPath, [this] { return scratchPath(m_script.m_scriptName, ".sql"); },
        [this](const CVoError&) {
            m_report.log(FXString::Format(messages::kSqlFileNotCreated, m_sqlPath.c_str()));
        });
    if (created || m_keepSqlFile == 0) m_sqlRemoval = RemovedAtEnd(m_sqlPath);
    return created || m_report.report(FXString::Format(messages::kSqlFileNotOpened, m_sqlPath.c_str()));
}

bool SqlFileRun::writeSqlFile() {
    if (!compose([this](std::string_view text) { return write(text); }) || !closeSqlFile()) {
        return m_report.report(FXString::Format(messages::kSqlFileNotWritten, m_sqlPath.c_str(),
                                                m_writeError.GetErrorCode(), m_writeError.AsString()));
    }
    if (m_keepSqlFile != 0)
        m_sqlRemoval.keep();  // not before it is whole: nobody may run half a script later
    if (m_recordedInput.empty()) m_recordedInput = m_joinedValues;
    m_report.log(messages::kStarted);
    return true;
}

// Hands the text over piece by piece. False as soon as a write fails.
bool SqlFileRun::compose(const PlaceholderFiller::Write& write) {
    PlaceholderFiller filler(
        [this](const std::string& value) { return quotesDoubledInPlace(*m_script.m_db, value); }, write);
    const std::string body = blankPercentSignsInComments(m_script.m_scriptBody);
    if (!write(kPrefix) || !filler.fill(body, m_parameters)) return false;
    m_joinedValues = filler.joinedValues();
    return true;
}

bool SqlFileRun::preview(std::string& sql) {
    return m_report.hasSession() && compose([&sql](std::string_view text) {
               sql += text;
               return true;
           });
}

bool SqlFileRun::recordStart() {
    return m_script.recordExecStart(m_recordedInput.c_str());
}

bool SqlFileRun::createOutputFile() {
    CVoFile file;
    std::string& path = m_script.m_outputFile;
    const bool created = createUnique(
        file, O_RDONLY, path,
        [this] { return outputPath(m_script.m_logDir, m_script.m_dbName, m_script.m_scriptName); },
        [&](const CVoError& error) {
            m_report.log(FXString::Format(messages::package_run::kOutputAttemptFailed, path.c_str(),
                                          error.GetErrorCode(), error.AsString()));
        });
    return created || m_report.report(FXString::Format(messages::kOutputNotCreated, path.c_str()));
}

// No end is recorded and the SQL file stays, whatever the configuration says. Kept on purpose.
bool SqlFileRun::endWithoutOutput() {
    m_sqlRemoval.keep();
    return false;
}

void SqlFileRun::runQueryTool() {
    m_report.log(FXString::Format(messages::kOutputFile, m_script.m_outputFile.c_str()));
    if (!m_script.m_db->RunFileQuery_TS(m_sqlPath.c_str(), m_script.m_outputFile.c_str(),
                                        m_script.m_dbName.c_str(), m_script.m_contentType)) {
        fail(FXString::Format(messages::package_run::kToolFailed, m_script.m_db->getErrorMsg()));
    }
}

void SqlFileRun::recordEnd() {
    if (!m_script.recordExecEnd(m_failed ? kExecFailed : kExecSucceeded)) m_failed = true;
}

// What the tool wrote is read even when it failed.
void SqlFileRun::collectOutput() {
    namespace texts = messages::package_run;
    const char* path = m_script.m_outputFile.c_str();
    CVoFile file;
    if (file.Open(path, "rb").IsError()) return fail(FXString::Format(texts::kOutputNotOpened, path));
    RemovedAtEnd brokenOff(path);  // output that memory cannot hold is not left behind
    m_report.toolOutput(file, kOutputChunk, m_failed);
    brokenOff.keep();
    if (!m_failed) m_report.report(messages::kSucceeded);
    if (file.Close().IsError()) return fail(FXString::Format(texts::kOutputNotClosed, path));
    if (CVoFile::Delete(path, false).IsError()) fail(FXString::Format(texts::kOutputNotDeleted, path));
}

bool SqlFileRun::write(std::string_view text) {
    m_writeError = m_sqlFile.Write(text.data(), text.size());
    return !m_writeError.IsError();
}

bool SqlFileRun::closeSqlFile() {
    m_writeError = m_sqlFile.Close();
    return !m_writeError.IsError();
}

void SqlFileRun::fail(std::string message) {
    m_report.report(std::move(message));
    m_failed = true;
}

#include "ProcedureRun.h"

#include <fcntl.h>

#include "CVoFile.h"
#include "CallerText.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/TScript.h"
#include "FX.h"
#include "OutputHeader.h"
#include "RemovedAtEnd.h"
#include "ScriptFileNames.h"
#include "ScriptMessages.h"
#include "SqlQuotes.h"
#include "UniqueFile.h"

namespace {

namespace texts = messages::procedure_run;

// Option bits of the run beside those of the query tool.
constexpr int kDropHeader = 4;
constexpr int kUnicodeOutput = 8;  // not read back

constexpr std::size_t kOutputChunk = 32767;
enum ExecStatus { kExecSucceeded = 1, kExecFailed = 2 };

constexpr char kExecution[] = " %s EXEC %s %s %s ";  // user prefix, procedure, arguments, user suffix
constexpr char kPlainExecution[] = " %s EXEC %s %s ";
constexpr char kUserPrefix[] =
    " SET NOCOUNT ON  CREATE TABLE #tempTSUser (userId int) INSERT INTO #tempTSUser SELECT %d \n";
constexpr char kUserSuffix[] = "\n DROP TABLE #tempTSUser ";
constexpr char kHelpQuery[] =
    " print 'Usage:'  DECLARE @usage varchar(max) "
    " set @usage = (SELECT usage FROM ZpTscripts WHERE id = %d) "
    " print @usage  print ' '  print 'Please check readme file for more information.' ";
constexpr char kParametersQuery[] = " print 'TScript Parameter(s):'  print ' '  EXEC VT_GetSpParams '%s' ";

}  // namespace

ProcedureRun::ProcedureRun(TScript& script, int operation, const char* arguments, const char* recordedInput,
                           std::int32_t contentType)
    : m_script(script),
      m_report(script),
      m_operation(operation),
      m_arguments(textOrEmpty(arguments)),
      m_recordedInput(*textOrEmpty(recordedInput) != '\0' ? recordedInput : m_arguments.data()),
      m_contentType(contentType),
      m_query(SqlBuffer::kPlain + m_arguments.size()) {}

bool ProcedureRun::run() {
    if (!m_report.hasSession() || !findScript() || !buildQuery()) return false;
    m_report.log(FXString::Format(texts::kStartedAs, m_operation, m_script.m_auditLevel));
    if (!recordStart()) return false;
    // Without an output file the run ends here, and a recorded start gets no end. Kept on purpose.
    if (!createOutputFile()) return false;
    runQueryTool();
    recordEnd();
    cleanHeader();
    collectOutput();
    return !m_failed;
}

bool ProcedureRun::preview(std::string& sql) {
    if (!buildQuery()) return false;
    sql = m_query.text();
    return true;
}

bool ProcedureRun::findScript() {
    m_script.getTscriptId();  // the id tells, also after a failed query
    return m_script.m_tscriptId >= 1 || m_report.report(texts::kInvalidName);
}

bool ProcedureRun::buildQuery() {
    if (!m_query.available()) return m_report.report(messages::kNoMemoryForQuery);
    switch (m_operation) {
        case kExecute:
            return buildExecution();
        case kHelp:
            buildHelp();
            return true;
        case kParameters:
            buildParameters();
            return true;
        default:
            return m_report.report(texts::kInvalidOperation);
    }
}

// The arguments stand in the query as they are: the caller writes them as the server wants them.
bool ProcedureRun::buildExecution() {
    std::string prefix;
    const char* suffix = "";
    if (m_script.m_secured) {
        if (m_script.m_userId == 0) return m_report.report(texts::kNeedUser);
        prefix = FXString::Format(kUserPrefix, m_script.m_userId);
        suffix = kUserSuffix;
    }
    const char* name = m_script.m_scriptName.c_str();
    if (m_arguments.empty()) {
        m_query.format(kPlainExecution, prefix.c_str(), name, suffix);
    } else {
        m_query.format(kExecution, prefix.c_str(), name, m_arguments.data(), suffix);
    }
    m_successMessage = messages::kSucceeded;
    return true;
}

void ProcedureRun::buildHelp() {
    m_query.format(kHelpQuery, m_script.m_tscriptId);
    m_successMessage = texts::kHelpSucceeded;
}

void ProcedureRun::buildParameters() {
    m_query.format(kParametersQuery, quotesDoubled(*m_script.m_db, m_script.m_scriptName).c_str());
    m_successMessage = texts::kParametersSucceeded;
}

bool ProcedureRun::journalled() const {
    return m_operation == kExecute && m_script.m_auditLevel > 0;
}

bool ProcedureRun::recordStart() {
    return !journalled() || m_script.recordExecStart(m_recordedInput);
}

bool ProcedureRun::createOutputFile() {
    CVoFile file;
    std::string& path = m_script.m_outputFile;
    const bool created = createUnique(
        file, O_RDONLY, path,
        [this] { return outputPath(m_script.m_logDir, m_script.m_dbName, m_script.m_scriptName); },
        [&](const CVoError& error) {
            m_report.log(FXString::Format(texts::kOutputAttemptFailed, path.c_str(), error.GetErrorCode()));
        });
    return created || m_report.report(FXString::Format(messages::kOutputNotCreated, path.c_str()));
}

void ProcedureRun::runQueryTool() {
    m_report.log(FXString::Format(messages::kOutputFile, m_script.m_outputFile.c_str()));
    if (!m_script.m_db->RunStringQuery_TS(m_query.text(), m_script.m_outputFile.c_str(),
                                          m_script.m_dbName.c_str(), m_contentType)) {
        fail(FXString::Format(texts::kToolFailed, m_script.m_db->getErrorMsg()));
    }
}

void ProcedureRun::recordEnd() {
    if (journalled() && !m_script.recordExecEnd(m_failed ? kExecFailed : kExecSucceeded)) m_failed = true;
}

void ProcedureRun::cleanHeader() {
    if ((m_contentType & kDropHeader) == 0 || m_failed) return;
    const CVoError error = removeOutputHeader(m_script.m_outputFile);
    if (!error.IsError()) return;
    fail(FXString::Format(texts::kHeaderNotRemoved, m_script.m_outputFile.c_str(), error.GetErrorCode(),
                          error.AsString()));
}

// What the tool wrote is read even when it failed.
void ProcedureRun::collectOutput() {
    if ((m_contentType & kUnicodeOutput) != 0) return concludeSuccess();
    const char* path = m_script.m_outputFile.c_str();
    CVoFile file;
    if (const CVoError error = file.Open(path, "rb"); error.IsError()) {
        return failAtOutput("open", error);
    }
    RemovedAtEnd brokenOff(path);  // output that memory cannot hold is not left behind
    m_report.toolOutput(file, kOutputChunk, m_failed);
    brokenOff.keep();
    concludeSuccess();
    if (const CVoError error = file.Close(); error.IsError()) {
        return failAtOutput("close", error);
    }
    if (const CVoError error = CVoFile::Delete(path, false); error.IsError()) {
        failAtOutput("delete", error);
    }
}

void ProcedureRun::concludeSuccess() {
    if (!m_failed) m_report.conclude(m_successMessage);
}

void ProcedureRun::fail(std::string message) {
    m_report.report(std::move(message));
    m_failed = true;
}

void ProcedureRun::failAtOutput(const char* step, const CVoError& error) {
    fail(FXString::Format(texts::kOutputStepFailed, step, m_script.m_outputFile.c_str(), error.GetErrorCode(),
                          error.AsString()));
}

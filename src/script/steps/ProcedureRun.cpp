#include "steps/ProcedureRun.h"

#include <fcntl.h>

#include <utility>

#include "CVoFile.h"
#include "CallerText.h"
#include "Causes.h"
#include "DVUtilities/DBBase.h"
#include "FX.h"
#include "files/OutputHeader.h"
#include "files/RemovedAtEnd.h"
#include "files/ScriptFileNames.h"
#include "files/UniqueFile.h"
#include "text/ScriptMessages.h"
#include "text/SqlQuotes.h"

namespace {

namespace texts = messages::procedure_run;

// Option bits of the run, in addition to those of the query tool.
constexpr int kDropHeader = 4;
constexpr int kUnicodeOutput = 8;  // the output is not read back

constexpr std::size_t kProcedureOutputChunk = 32767;

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

ProcedureRun::ProcedureRun(const ScriptParts& script, int operation, const char* arguments,
                           const char* recordedInput, std::int32_t contentType)
    : m_session(script.session),
      m_entry(script.entry),
      m_run(script.run),
      m_report(script),
      m_catalogue(script),
      m_journal(script),
      m_recorder(script),
      m_operation(operation),
      m_arguments(textOrEmpty(arguments)),
      m_recordedInput(*textOrEmpty(recordedInput) != '\0' ? recordedInput : m_arguments.data()),
      m_contentType(contentType),
      m_query(SqlBuffer::kPlain + m_arguments.size()) {}

bool ProcedureRun::run() {
    if (!m_report.requireSession() || !findScript() || !knowsSecured() || !buildQuery()) return false;
    m_report.log(FXString::Format(texts::kStartedAs, m_operation, m_entry.auditLevel));
    if (!recordStart()) return false;
    const bool succeeded = runStarted();
    if (m_operation == kExecuteProcedure) m_recorder.write(succeeded);
    return succeeded;
}

bool ProcedureRun::runStarted() {
    bool hasOutputFile = false;
    const bool isUnbroken = m_report.attempted([&] {
        hasOutputFile = createOutputFile();
        if (hasOutputFile) runQueryTool();
        return true;
    });
    // Without an output file the run ends, and a recorded start gets no end. Callers rely on it.
    if (isUnbroken && !hasOutputFile) return false;
    m_failed = m_failed || !isUnbroken;
    recordEnd();
    if (!hasOutputFile) return false;
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
    m_catalogue.find();  // after a failed query only the id says whether there is a row
    return m_entry.id >= 1 || m_report.fail(texts::kInvalidName);
}

// The look-up succeeds without the type. A secured script must not run for that reason as one that is not.
bool ProcedureRun::knowsSecured() {
    return m_operation != kExecuteProcedure || m_catalogue.readSecured() ||
           m_report.fail(texts::kTypeNotRead);
}

bool ProcedureRun::buildQuery() {
    if (!m_query.available()) return m_report.fail(messages::kNoMemoryForQuery);
    switch (m_operation) {
        case kExecuteProcedure:
            return buildExecution();
        case kProcedureHelp:
            buildHelp();
            return true;
        case kProcedureParameters:
            buildParameters();
            return true;
        default:
            return m_report.fail(texts::kInvalidOperation);
    }
}

// The arguments are inserted as they are: the caller writes them as SQL.
bool ProcedureRun::buildExecution() {
    std::string prefix;
    const char* suffix = "";
    if (m_entry.secured) {
        if (m_run.userId == 0) return m_report.fail(texts::kNeedUser);
        prefix = FXString::Format(kUserPrefix, m_run.userId);
        suffix = kUserSuffix;
    }
    const char* name = m_session.scriptName.c_str();
    if (m_arguments.empty()) {
        m_query.format(kPlainExecution, prefix.c_str(), name, suffix);
    } else {
        m_query.format(kExecution, prefix.c_str(), name, m_arguments.data(), suffix);
    }
    m_successMessage = messages::kSucceeded;
    return true;
}

void ProcedureRun::buildHelp() {
    m_query.format(kHelpQuery, m_entry.id);
    m_successMessage = texts::kHelpSucceeded;
}

void ProcedureRun::buildParameters() {
    m_query.format(kParametersQuery, quotesDoubled(*m_session.db, m_session.scriptName).c_str());
    m_successMessage = texts::kParametersSucceeded;
}

bool ProcedureRun::journalled() const {
    return m_operation == kExecuteProcedure && m_entry.auditLevel > 0;
}

bool ProcedureRun::recordStart() {
    if (m_operation == kExecuteProcedure) m_recorder.noteStart(journalled() ? m_recordedInput : nullptr);
    return !journalled() || m_journal.recordStart(m_recordedInput);
}

bool ProcedureRun::createOutputFile() {
    CVoFile file;
    std::string& path = m_run.outputFile;
    const bool created = createUnique(
        file, O_RDONLY, path,
        [this] { return outputPath(m_session.logDir, m_session.dbName, m_session.scriptName); },
        [&](const CVoError& error) {
            m_report.log(FXString::Format(texts::kOutputAttemptFailed, path.c_str(), error.GetErrorCode()));
        });
    if (created) m_outputMark = RunMark(path);
    return created || m_report.fail(FXString::Format(messages::kOutputNotCreated, path.c_str()));
}

void ProcedureRun::runQueryTool() {
    m_report.log(FXString::Format(messages::kOutputFile, m_run.outputFile.c_str()));
    if (!m_session.db->RunStringQuery_TS(m_query.text(), m_run.outputFile.c_str(), m_session.dbName.c_str(),
                                         m_contentType)) {
        fail(FXString::Format(texts::kToolFailed, m_session.db->getErrorMsg()));
    }
}

void ProcedureRun::recordEnd() {
    if (!journalled()) return;
    const RunStatus status = m_failed ? RunStatus::kFailed : RunStatus::kSucceeded;
    if (!m_report.attempted([&] { return m_journal.recordEnd(status); })) m_failed = true;
}

void ProcedureRun::cleanHeader() {
    if ((m_contentType & kDropHeader) == 0 || m_failed) return;
    const CVoError error = removeOutputHeader(m_run.outputFile);
    // Another file has the name if there was a heading. Otherwise the lock that is held must not be given up.
    if (RunMark mark(m_run.outputFile); mark.isHeld()) m_outputMark = std::move(mark);
    if (!error.IsError()) return;
    reportFileFailure(m_run.outputFile, error.GetErrorCode());
    fail(FXString::Format(texts::kHeaderNotRemoved, m_run.outputFile.c_str(), error.GetErrorCode(),
                          error.AsString()));
}

// Reads the tool's output also after a failure.
void ProcedureRun::collectOutput() {
    if ((m_contentType & kUnicodeOutput) != 0) {
        m_outputMark.remove();
        return reportExecuted();
    }
    const char* path = m_run.outputFile.c_str();
    CVoFile file;
    if (const CVoError error = file.Open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, /*permissions=*/0);
        error.IsError()) {
        return failAtOutput("open", error);
    }
    RemovedAtEnd brokenOff(path);  // also when the output does not fit into memory
    m_report.toolOutput(file, m_run.outputFile, kProcedureOutputChunk, m_failed);
    brokenOff.keep();
    reportExecuted();
    if (const CVoError error = file.Close(); error.IsError()) {
        return failAtOutput("close", error);
    }
    if (const CVoError error = CVoFile::Delete(path, /*missingIsFine=*/false); error.IsError()) {
        failAtOutput("delete", error);
    }
}

// The script ran; the clean-up of its output may still fail.
void ProcedureRun::reportExecuted() {
    if (!m_failed) m_report.reportLast(m_successMessage);
}

void ProcedureRun::fail(std::string message) {
    m_report.report(std::move(message));
    m_failed = true;
}

void ProcedureRun::failAtOutput(const char* step, const CVoError& error) {
    reportFileFailure(m_run.outputFile, error.GetErrorCode());
    fail(FXString::Format(texts::kOutputStepFailed, step, m_run.outputFile.c_str(), error.GetErrorCode(),
                          error.AsString()));
}

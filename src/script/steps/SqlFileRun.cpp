#include "steps/SqlFileRun.h"

#include <fcntl.h>

#include <utility>

#include "CallerText.h"
#include "Causes.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "FX.h"
#include "RegistryNames.h"
#include "TextAsFormat.h"
#include "VtToolVariables.h"
#include "files/ScriptFileNames.h"
#include "files/UniqueFile.h"
#include "package/PackageParser.h"
#include "text/ScriptMessages.h"
#include "text/SqlQuotes.h"

namespace {

constexpr std::string_view kPrefix = "SET ARITHABORT ON \nGO \n";
constexpr std::size_t kFileOutputChunk = 4095;

// Scope in which the query tool may expand variables although it is strict.
class ToolVariables {
  public:
    explicit ToolVariables(bool expand) {
        if (VtExpandToolVariables != nullptr) m_before = VtExpandToolVariables(expand);
    }
    ~ToolVariables() {
        if (VtExpandToolVariables != nullptr) VtExpandToolVariables(m_before);
    }
    ToolVariables(const ToolVariables&) = delete;
    ToolVariables& operator=(const ToolVariables&) = delete;

  private:
    bool m_before = false;
};

}  // namespace

SqlFileRun::SqlFileRun(const ScriptParts& script, std::vector<std::string> parameters,
                       const char* recordedInput, QuoteRule quoteRule)
    : m_session(script.session),
      m_package(script.package),
      m_outputFile(script.run.outputFile),
      m_report(script),
      m_journal(script),
      m_recorder(script),
      m_parameters(std::move(parameters)),
      m_recordedInput(textOrEmpty(recordedInput)),
      m_quoteRule(quoteRule) {}

bool SqlFileRun::run() {
    if (!m_report.requireSession()) return false;
    readKeepSetting();
    if (!createSqlFile() || !writeSqlFile() || !recordStart()) return false;
    const bool succeeded = runStarted();
    m_recorder.write(succeeded);
    return succeeded;
}

bool SqlFileRun::runStarted() {
    bool hasOutputFile = false;
    const bool isUnbroken = m_report.attempted([&] {
        hasOutputFile = createOutputFile();
        if (hasOutputFile) runQueryTool();
        return true;
    });
    if (isUnbroken && !hasOutputFile) return endWithoutOutput();
    m_failed = m_failed || !isUnbroken;
    recordEnd();
    if (hasOutputFile) collectOutput();
    return !m_failed;
}

void SqlFileRun::readKeepSetting() {
    if (!m_session.util->GetRegItemValue(m_session.instanceName.c_str(), registry::key::kDatabase,
                                         registry::value::kKeepSqlFile, /*text=*/nullptr, &m_keepSqlFile)) {
        m_keepSqlFile = 0;
    }
}

bool SqlFileRun::createSqlFile() {
    // Unless SQL files are kept, the last path tried is removed at the end, even one that could not be
    // created and belongs to somebody else. Callers rely on it.
    std::string lastPath;  // copied before the file is created: without memory for a copy, it would stay
    const bool created = createUnique(
        m_sqlFile, O_WRONLY, m_sqlPath, [&] { return lastPath = scratchPath(m_session.scriptName, ".sql"); },
        [this](const CVoError&) {
            m_report.log(FXString::Format(messages::kSqlFileNotCreated, m_sqlPath.c_str()));
        });
    if (created || m_keepSqlFile == 0) m_sqlRemoval = RemovedAtEnd(std::move(lastPath));
    if (created) m_sqlMark = RunMark(m_sqlPath);
    return created || m_report.fail(FXString::Format(messages::kSqlFileNotOpened, m_sqlPath.c_str()));
}

bool SqlFileRun::writeSqlFile() {
    if (const CVoError error = composeToFile(); error.IsError()) {
        reportFileFailure(m_sqlPath, error.GetErrorCode());
        return m_report.fail(FXString::Format(messages::kSqlFileNotWritten, m_sqlPath.c_str(),
                                              error.GetErrorCode(), error.AsString()));
    }
    if (m_keepSqlFile != 0) {  // only a complete file: nobody may run half a script later
        m_sqlRemoval.keep();
        m_sqlMark.remove();
    }
    if (m_recordedInput.empty()) m_recordedInput = m_joinedValues;
    m_report.log(messages::kStarted);
    return true;
}

CVoError SqlFileRun::composeToFile() {
    CVoError error;
    const bool written = compose([&](std::string_view text) {
        error = m_sqlFile.Write(text.data(), text.size());
        return !error.IsError();
    });
    return written ? m_sqlFile.Close() : error;
}

// Writes the text piece by piece. False as soon as a write fails.
bool SqlFileRun::compose(const PlaceholderFiller::Write& write) {
    PlaceholderFiller filler(
        [this](const std::string& value) {
            return m_quoteRule == QuoteRule::kEvery ? quotesDoubled(*m_session.db, value)
                                                    : quotesDoubledInPlace(*m_session.db, value);
        },
        write);
    const std::string body = blankPercentSignsInComments(m_package.scriptBody);
    if (!write(kPrefix) || !filler.fill(body, m_parameters)) return false;
    m_joinedValues = filler.joinedValues();
    return true;
}

bool SqlFileRun::preview(std::string& sql) {
    return m_report.requireSession() && compose([&sql](std::string_view text) {
               sql += text;
               return true;
           });
}

bool SqlFileRun::recordStart() {
    m_recorder.noteStart(m_recordedInput.c_str());
    return m_journal.recordStart(m_recordedInput.c_str());
}

bool SqlFileRun::createOutputFile() {
    CVoFile file;
    std::string& path = m_outputFile;
    const bool created = createUnique(
        file, O_RDONLY, path,
        [this] { return outputPath(m_session.logDir, m_session.dbName, m_session.scriptName); },
        [&](const CVoError& error) {
            m_report.log(FXString::Format(messages::package_run::kOutputAttemptFailed, path.c_str(),
                                          error.GetErrorCode(), error.AsString()));
        });
    if (created) m_outputMark = RunMark(path);
    return created || m_report.fail(FXString::Format(messages::kOutputNotCreated, path.c_str()));
}

// Records no end and keeps the SQL file, whatever the configuration says. Callers rely on it.
bool SqlFileRun::endWithoutOutput() {
    m_sqlRemoval.keep();
    return false;
}

void SqlFileRun::runQueryTool() {
    m_report.log(FXString::Format(messages::kOutputFile, m_outputFile.c_str()));
    const ToolVariables variables(needsToolVariables(m_package.description) ||
                                  needsToolVariables(m_package.developerName));
    if (!m_session.db->RunFileQuery_TS(m_sqlPath.c_str(), m_outputFile.c_str(), m_session.dbName.c_str(),
                                       m_package.contentType)) {
        fail(FXString::Format(messages::package_run::kToolFailed, m_session.db->getErrorMsg()));
    }
}

void SqlFileRun::recordEnd() {
    const RunStatus status = m_failed ? RunStatus::kFailed : RunStatus::kSucceeded;
    if (!m_report.attempted([&] { return m_journal.recordEnd(status); })) m_failed = true;
}

// Reads the tool's output also after a failure.
void SqlFileRun::collectOutput() {
    namespace texts = messages::package_run;
    const char* path = m_outputFile.c_str();
    CVoFile file;
    if (const CVoError error = file.Open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, /*permissions=*/0);
        error.IsError())
        return failAtOutput(texts::kOutputNotOpened, error);
    RemovedAtEnd brokenOff(path);  // also when the output does not fit into memory
    m_report.toolOutput(file, m_outputFile, kFileOutputChunk, m_failed);
    brokenOff.keep();
    if (!m_failed) m_report.report(messages::kSucceeded);
    if (const CVoError error = file.Close(); error.IsError())
        return failAtOutput(texts::kOutputNotClosed, error);
    if (const CVoError error = CVoFile::Delete(path, /*missingIsFine=*/false); error.IsError())
        failAtOutput(texts::kOutputNotDeleted, error);
}

void SqlFileRun::failAtOutput(const char* message, const CVoError& error) {
    reportFileFailure(m_outputFile, error.GetErrorCode());
    fail(textAsFormat(message, {m_outputFile}));
}

void SqlFileRun::fail(std::string message) {
    m_report.report(std::move(message));
    m_failed = true;
}

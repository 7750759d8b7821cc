#include "DVUtilities/TScript.h"

#include "Attempt.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/commonFunc.h"
#include "ExceptionGuard.h"
#include "PackageLoader.h"
#include "ProcedureRun.h"
#include "ScriptCatalogue.h"
#include "ScriptMessages.h"
#include "ScriptReport.h"
#include "ScriptSession.h"
#include "SqlFileRun.h"

namespace {
constexpr int kTimeText = 1024;

template <typename Work>
bool attempted(TScript& script, Work&& work) {
    return attempt(std::forward<Work>(work), [&] { ScriptReport(script).report(messages::kBrokenOff); });
}

}  // namespace

TScript::TScript() : m_loadTime(std::time(nullptr)), m_creationTime(m_loadTime) {}

TScript::~TScript() {
    delete m_db;
    delete m_util;
}

// ---- Session -------------------------------------------------------------------------------------------

bool TScript::initialize(const char* name) {
    return attempted(*this, [&] { return ScriptSession(*this).start(name); });
}

bool TScript::setDbAndLog(const char* dbName) {
    return attempted(*this, [&] { return ScriptSession(*this).chooseDatabase(dbName); });
}

// ---- Catalogue -----------------------------------------------------------------------------------------

bool TScript::getTscriptId() {
    return attempted(*this, [&] { return ScriptCatalogue(*this).find(); });
}

bool TScript::checkPlexumId() {
    return attempted(*this, [&] { return ScriptCatalogue(*this).checkSite(); });
}

bool TScript::checkGUID() {
    return attempted(*this, [&] { return ScriptCatalogue(*this).checkGuid(); });
}

bool TScript::addNewTscript() {
    return attempted(*this, [&] { return ScriptCatalogue(*this).addPackage(); });
}

bool TScript::recordExecStart(const char* inputParams) {
    return attempted(*this, [&] { return ScriptCatalogue(*this).recordStart(inputParams); });
}

bool TScript::recordExecEnd(int status) {
    return attempted(*this, [&] { return ScriptCatalogue(*this).recordEnd(status); });
}

// ---- Package -------------------------------------------------------------------------------------------

bool TScript::setSQLFile(const char* path) {
    return attempted(*this, [&] { return PackageLoader(*this).run(path); });
}

const char* TScript::getSQLFile() {
    guarded([&] { PackageLoader(*this).findByName(); });
    return m_sqlFilePath.c_str();
}

void TScript::getSQLFileHelp(std::string& text) {
    guarded([&] {
        text = "\n\nUsage:\n" + m_usage + "\n\nDescription:\n" + m_description + "\n\nCreation Time:\n" +
               getCreation() + "\n\n";
    });
}

// ---- Execution -----------------------------------------------------------------------------------------

bool TScript::executeSQLFile(std::vector<std::string> parameters, const char* recordedInput) {
    return attempted(*this, [&] { return SqlFileRun(*this, std::move(parameters), recordedInput).run(); });
}

bool TScript::isTscriptSP(const char* name, const char* dbName) {
    if (m_fromPackage) return false;
    if (m_logFile.empty() && !initialize(name)) return false;
    if (m_dbName.empty() && !setDbAndLog(dbName)) return false;
    getTscriptId();
    return m_tscriptId > 0;
}

bool TScript::execTscript(int operation, const char* arguments, const char* recordedInput, int userId) {
    return attempted(*this, [&] {
        m_userId = userId;
        return ProcedureRun(*this, operation, arguments, recordedInput, m_contentType).run();
    });
}

// ---- What the run knows and produced -------------------------------------------------------------------

const char* TScript::getScriptName() const {
    return m_scriptName.c_str();
}
const char* TScript::getDbName() const {
    return m_dbName.c_str();
}
const char* TScript::getLogFile() const {
    return m_logFile.c_str();
}
const char* TScript::getErrorMessage() const {
    return m_errorMessage.c_str();
}
const char* TScript::getUsage() const {
    return m_usage.c_str();
}
const char* TScript::getOutput() const {
    return m_output.c_str();
}
const char* TScript::getDescription() const {
    return m_description.c_str();
}
int TScript::getAuditLevel() const {
    return m_auditLevel;
}

const char* TScript::getCreation() {
    guarded([&] {
        char text[kTimeText];
        m_creationText = GetTimeString(text, kTimeText, m_creationTime, false);
    });
    return m_creationText.c_str();
}

#include "DVUtilities/TScript.h"

#include "Causes.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/commonFunc.h"
#include "ExceptionGuard.h"
#include "catalogue/ScriptCatalogue.h"
#include "catalogue/ScriptJournal.h"
#include "catalogue/ScriptSession.h"
#include "catalogue/SiteCheck.h"
#include "state/ScriptParts.h"
#include "state/ScriptReport.h"
#include "steps/PackageLoader.h"
#include "steps/ProcedureRun.h"
#include "steps/SqlFileRun.h"

void DVU_GetCauses(const TScript& script, std::vector<DVUCause_t>& causes) {
    causes.clear();
    if (script.m_causes != nullptr) guarded([&] { causes = script.m_causes->causes; });
}

ScriptParts partsOf(TScript& script) {
    return {.session = {.db = script.m_db,
                        .util = script.m_util,
                        .scriptName = script.m_scriptName,
                        .machineName = script.m_machineName,
                        .instanceName = script.m_instanceName,
                        .dbName = script.m_dbName,
                        .logDir = script.m_logDir,
                        .logFile = script.m_logFile},
            .messages = {.last = script.m_errorMessage, .output = script.m_output},
            .entry = {.id = script.m_tscriptId,
                      .auditLevel = script.m_auditLevel,
                      .secured = script.m_secured,
                      .typeRead = script.m_typeRead,
                      .fromPackage = script.m_fromPackage},
            .package = {.path = script.m_sqlFilePath,
                        .fileHash = script.m_packageHash,
                        .plexumId = script.m_plexumId,
                        .creationTime = script.m_creationTime,
                        .guid = script.m_guid,
                        .developerName = script.m_developerName,
                        .description = script.m_description,
                        .usage = script.m_usage,
                        .scriptBody = script.m_scriptBody,
                        .contentType = script.m_contentType},
            .run = {.execId = script.m_execId, .userId = script.m_userId, .outputFile = script.m_outputFile}};
}

namespace {

constexpr int kTimeText = 1024;

// Runs `work` on the parts of a script; an exception is reported and counts as false. `kept` receives the
// causes of a failure.
template <typename Work>
bool attempted(TScript& script, DVUCauseList*& kept, Work&& work) {
    return collected(kept, false, [&] {
        const ScriptParts parts = partsOf(script);
        return ScriptReport(parts).attempted([&] { return work(parts); });
    });
}

}  // namespace

TScript::TScript() : m_loadTime(std::time(nullptr)), m_creationTime(m_loadTime) {}

TScript::~TScript() {
    delete m_db;
    delete m_util;
    delete m_causes;
}

// ---- Session -------------------------------------------------------------------------------------------

bool TScript::initialize(const char* name) {
    return attempted(*this, m_causes, [&](auto& parts) { return ScriptSession(parts).start(name); });
}

bool TScript::setDbAndLog(const char* dbName) {
    return attempted(*this, m_causes,
                     [&](auto& parts) { return ScriptSession(parts).chooseDatabase(dbName); });
}

// ---- Catalogue -----------------------------------------------------------------------------------------

bool TScript::getTscriptId() {
    return attempted(*this, m_causes, [&](auto& parts) { return ScriptCatalogue(parts).find(); });
}

bool TScript::checkPlexumId() {
    return attempted(*this, m_causes, [&](auto& parts) { return SiteCheck(parts).checkSite(); });
}

bool TScript::checkGUID() {
    return attempted(*this, m_causes, [&](auto& parts) { return SiteCheck(parts).checkGuid(); });
}

bool TScript::addNewTscript() {
    return attempted(*this, m_causes, [&](auto& parts) { return ScriptCatalogue(parts).addPackage(); });
}

bool TScript::recordExecStart(const char* inputParams) {
    return attempted(*this, m_causes,
                     [&](auto& parts) { return ScriptJournal(parts).recordStart(inputParams); });
}

bool TScript::recordExecEnd(int status) {
    return attempted(*this, m_causes, [&](auto& parts) { return ScriptJournal(parts).recordEnd(status); });
}

// ---- Package -------------------------------------------------------------------------------------------

bool TScript::setSQLFile(const char* path) {
    return attempted(*this, m_causes, [&](auto& parts) { return PackageLoader(parts).run(path); });
}

const char* TScript::getSQLFile() {
    guarded([&] { PackageLoader(partsOf(*this)).findByName(); });
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
    return attempted(*this, m_causes, [&](auto& parts) {
        return SqlFileRun(parts, std::move(parameters), recordedInput).run();
    });
}

bool TScript::isTscriptSP(const char* name, const char* dbName) {
    return collected(m_causes, false, [&] {
        if (m_fromPackage) return false;
        if (m_logFile.empty() && !initialize(name)) return false;
        if (m_dbName.empty() && !setDbAndLog(dbName)) return false;
        getTscriptId();
        return m_tscriptId > 0;
    });
}

bool TScript::execTscript(int operation, const char* arguments, const char* recordedInput, int userId) {
    return attempted(*this, m_causes, [&](auto& parts) {
        m_userId = userId;
        return ProcedureRun(parts, operation, arguments, recordedInput, m_contentType).run();
    });
}

// ---- State and results of the run ----------------------------------------------------------------------

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
        m_creationText = GetTimeString(text, kTimeText, m_creationTime, /*dateOnly=*/false);
    });
    return m_creationText.c_str();
}

#include "ScriptSession.h"

#include <strings.h>

#include <algorithm>
#include <string>

#include "CallerText.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/TScript.h"
#include "DVUtilities/commonFunc.h"
#include "EvDebug.h"
#include "FX.h"
#include "ScriptMessages.h"
#include "VTPI.h"

namespace {

// The number under which script runs register with the debug log.
constexpr unsigned int kDebugFacility = 1165352034;
constexpr char kLogName[] = "Tscript.log";

// Every name that a caller may give, in the spelling that is kept.
constexpr const char* kDatabases[] = {"Dorvas", "TNet", "NQ2", "WFEngine", "VTCloud", "HistoryDB"};
constexpr const char* kManagementDatabase = "Dorvas";

// Installed components and their databases; TNet is never detected.
struct Component {
    bool (*installed)(const char* instance, std::string& errorText);
    const char* database;
};
constexpr Component kComponents[] = {{isPlatformDV, kManagementDatabase},
                                     {isPlatformNQ2, "NQ2"},
                                     {isPlatformVTCloud, "VTCloud"},
                                     {isPlatformHistory, "HistoryDB"},
                                     {isPlatformWFEngine, "WFEngine"}};

}  // namespace

bool ScriptSession::start(const char* name) {
    m_script.m_scriptName = textOrEmpty(name);
    discardObjects();
    if (m_script.m_scriptName.empty()) {
        m_report.set(messages::kEmptyScriptName);
        return false;
    }
    m_script.m_db = new DBBase(false);
    m_script.m_util = new DVUtilLib(m_script.m_scriptName.c_str(), false);
    if (!nameMachine()) return false;
    startLog();
    m_report.log(messages::kInitialized);
    return true;
}

void ScriptSession::discardObjects() {
    delete m_script.m_db;
    m_script.m_db = nullptr;
    delete m_script.m_util;
    m_script.m_util = nullptr;
}

bool ScriptSession::nameMachine() {
    if (m_script.m_util->GetMachineName(m_script.m_machineName, m_script.m_instanceName)) return true;
    m_report.set(messages::kNoMachineName);
    return false;
}

void ScriptSession::startLog() {
    VTPI_Focus::setFocus(m_script.m_instanceName.c_str());
    EvDebug().initialize(kDebugFacility, 0, false, "");
    const VTPI_Base base;
    m_script.m_logDir = VTPI_EventManager(base).getLogFilesDirectory();
    m_script.m_logFile = m_script.m_logDir;
    FXPath::Append(m_script.m_logFile, kLogName);
}

bool ScriptSession::chooseDatabase(const char* dbName) {
    if (!m_script.m_dbName.empty()) return true;
    if (!m_report.hasSession()) return false;
    return settle(dbName) && connect() && findScript();
}

bool ScriptSession::openDatabase(const char* dbName) {
    if (!m_report.hasSession() || !settle(dbName) || !connect()) return false;
    return m_script.m_db->Open(nullptr, nullptr, nullptr) || m_report.report(messages::kNoAccess);
}

bool ScriptSession::settle(const char* dbName) {
    const bool given = *textOrEmpty(dbName) != '\0';
    return given ? takeDatabase(dbName) : detectDatabase();
}

// The only component's database, or else, on a management server, that one's.
bool ScriptSession::detectDatabase() {
    int count = 0;
    const char* first = nullptr;
    for (const Component& component : kComponents) {
        if (!component.installed(m_script.m_instanceName.c_str(), m_script.m_errorMessage)) continue;
        if (++count == 1) first = component.database;
    }
    if (count != 1 && first != kManagementDatabase) return m_report.report(messages::kSeveralDatabases);
    m_script.m_dbName = first;
    return true;
}

bool ScriptSession::takeDatabase(const char* name) {
    const auto* known = std::find_if(std::begin(kDatabases), std::end(kDatabases),
                                     [&](const char* database) { return strcasecmp(database, name) == 0; });
    if (known == std::end(kDatabases)) {
        return m_report.report(FXString::Format(messages::kInvalidDatabase, name));
    }
    m_script.m_dbName = *known;
    return true;
}

bool ScriptSession::connect() {
    if (!m_script.m_db->GetAccountInfo(m_script.m_machineName.c_str(), m_script.m_instanceName.c_str(),
                                       m_script.m_logFile.c_str(), m_script.m_dbName.c_str())) {
        return m_report.report(messages::kNoAccess);
    }
    m_report.log(FXString::Format(messages::kConnected, m_script.m_machineName.c_str(),
                                  m_script.m_instanceName.c_str(), m_script.m_dbName.c_str()));
    return true;
}

// A package may be missing from the catalogue: loading adds it.
bool ScriptSession::findScript() {
    return m_script.getTscriptId() || m_script.m_fromPackage || m_report.report(messages::kNotPermanent);
}

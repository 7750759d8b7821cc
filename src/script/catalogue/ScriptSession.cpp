#include "catalogue/ScriptSession.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "CallerText.h"
#include "Causes.h"
#include "CommonMessages.h"
#include "DVUtilities/DBBase.h"
#include "DVUtilities/DVUtilLib.h"
#include "DVUtilities/commonFunc.h"
#include "EvDebug.h"
#include "FX.h"
#include "LetterCase.h"
#include "RegistryNames.h"
#include "VTPI.h"
#include "parts/DatabaseNames.h"
#include "text/ScriptMessages.h"

namespace {

// Facility number of script runs in the debug log.
constexpr unsigned int kDebugFacility = 1165352034;
constexpr int kDefaultLevel = 0;
constexpr bool kAsynchronous = false;
constexpr char kDefaultLogName[] = "";
constexpr char kLogName[] = "Tscript.log";
constexpr bool kUnusedFlag = false;

// Accepted names, in the spelling that is stored.
constexpr const char* kDatabases[] = {"Dorvas", "TNet", "NQ2", "WFEngine", "VTCloud", "HistoryDB"};

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
    m_session.scriptName = textOrEmpty(name);
    discardObjects();
    if (m_session.scriptName.empty()) {
        m_report.set(messages::kEmptyScriptName);
        return false;
    }
    m_session.db = new DBBase(kUnusedFlag);
    m_session.util = new DVUtilLib(m_session.scriptName.c_str(), kUnusedFlag);
    if (!nameMachine()) {
        discardObjects();  // a session that did not start is none
        return false;
    }
    startLog();
    m_report.log(messages::kInitialized);
    return true;
}

void ScriptSession::discardObjects() {
    delete m_session.db;
    m_session.db = nullptr;
    delete m_session.util;
    m_session.util = nullptr;
}

bool ScriptSession::nameMachine() {
    if (m_session.util->GetMachineName(m_session.machineName, m_session.instanceName)) return true;
    reportConfiguration(registry::key::kDorvase, registry::value::kHostName, common_messages::kValueMissing);
    m_report.set(messages::kNoMachineName);
    return false;
}

void ScriptSession::startLog() {
    VTPI_Focus::setFocus(m_session.instanceName.c_str());
    EvDebug().initialize(kDebugFacility, kDefaultLevel, kAsynchronous, kDefaultLogName);
    const VTPI_Base base;
    m_session.logDir = VTPI_EventManager(base).getLogFilesDirectory();
    m_session.logFile = m_session.logDir;
    FXPath::Append(m_session.logFile, kLogName);
}

bool ScriptSession::chooseDatabase(const char* dbName) {
    if (!m_session.dbName.empty()) return true;
    if (!m_report.requireSession()) return false;
    return chooseName(dbName) && connect() && findScript();
}

bool ScriptSession::openDatabase(const char* dbName) {
    if (!m_report.requireSession() || !chooseName(dbName) || !connect()) return false;
    return m_session.db->Open(nullptr, nullptr, nullptr) || m_report.fail(messages::kNoAccess);
}

bool ScriptSession::chooseName(const char* dbName) {
    const bool given = *textOrEmpty(dbName) != '\0';
    return given ? acceptName(dbName) : detectDatabase();
}

// The database of the only installed component; the management server's if several are.
bool ScriptSession::detectDatabase() {
    int count = 0;
    std::string_view first;
    for (const Component& component : kComponents) {
        if (!component.installed(m_session.instanceName.c_str(), m_messages.last)) continue;
        if (++count == 1) first = component.database;
    }
    if (count != 1 && first != kManagementDatabase) return m_report.fail(messages::kSeveralDatabases);
    m_session.dbName = first;
    return true;
}

bool ScriptSession::acceptName(const char* name) {
    const auto* known = std::find_if(std::begin(kDatabases), std::end(kDatabases),
                                     [&](const char* database) { return equalIgnoringCase(database, name); });
    if (known == std::end(kDatabases)) {
        return m_report.fail(FXString::Format(messages::kInvalidDatabase, name));
    }
    m_session.dbName = *known;
    return true;
}

bool ScriptSession::connect() {
    if (!m_session.db->GetAccountInfo(m_session.machineName.c_str(), m_session.instanceName.c_str(),
                                      m_session.logFile.c_str(), m_session.dbName.c_str())) {
        return m_report.fail(messages::kNoAccess);
    }
    m_report.log(FXString::Format(messages::kConnected, m_session.machineName.c_str(),
                                  m_session.instanceName.c_str(), m_session.dbName.c_str()));
    return true;
}

// A package may be missing from the catalogue: its load adds it.
bool ScriptSession::findScript() {
    return m_catalogue.find() || m_fromPackage || m_report.fail(messages::kNotPermanent);
}

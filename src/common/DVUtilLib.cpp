#include "DVUtilities/DVUtilLib.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <map>
#include <string_view>

#include "CallerText.h"
#include "Causes.h"
#include "CommonMessages.h"
#include "DVUtilities/commonFunc.h"
#include "EvDebug.h"
#include "ExceptionGuard.h"
#include "FX.h"
#include "HostIdentity.h"
#include "LetterCase.h"
#include "LogFiles.h"
#include "Registry.h"
#include "RegistryNames.h"
#include "VTPlatformInfo.h"

namespace {

struct KnownVersion {
    std::string_view beginning;
    int number;
};
constexpr std::array<KnownVersion, 10> kKnownVersions{{{"3.1.0", 310},
                                                       {"3.7.0", 370},
                                                       {"3.7.1", 371},
                                                       {"4.1.0", 410},
                                                       {"4.2.0", 420},
                                                       {"5.0.0", 500},
                                                       {"5.9.0", 590},
                                                       {"6.1.0", 610},
                                                       {"7.0.0", 700},
                                                       {"8.0.0", 800}}};

int versionNumberOf(std::string_view version) {
    for (const KnownVersion& known : kKnownVersions)
        if (version.substr(0, known.beginning.size()) == known.beginning) return known.number;
    return 0;
}

// Always false.
bool failAtValue(const char* key, const char* valueName) {
    reportConfiguration(key, valueName, common_messages::kValueMissing);
    return false;
}

using Names = std::map<std::string, std::string>;

// Reads the installation's instances, sorted by name.
Names instancesUnder(const char* root) {
    Names instances;
    VTPlatformInfo().getRegValues(root, &instances);
    return instances;
}

}  // namespace

DVUtilLib::DVUtilLib(const char* name, bool flag) : m_flag(flag) {
    guarded([&] { m_name = textOrEmpty(name); });
    setProductTypeZephra(/*zephra=*/true);
}

DVUtilLib::~DVUtilLib() {
    if (m_sqlFile.empty()) return;
    guarded([&] {
        unsigned int keep = 0;
        GetRegItemValue(m_names.databaseKey, registry::value::kKeepSqlFile, nullptr, &keep);
        if (keep == 0) FXFile::Remove(m_sqlFile.c_str());
    });
}

void DVUtilLib::setProductTypeZephra(bool zephra) {
    using namespace registry;
    m_productTypeZephra = zephra;
    m_names = {.root = kRoot,
               .baseKey = key::kBase,
               .databaseKey = key::kDatabase,
               .eventManagerKey = key::kEventManager,
               .managementServerKey = key::kDorvase,
               .sessionKey = key::kSession,
               .installKey = key::kInstall,
               .platformType = value::kPlatformType,
               .baseDirectory = value::kBaseDirectory,
               .home = value::kHome,
               .installDirectory = value::kInstallDirectory,
               .logDirectory = value::kLogDirectory,
               .networkPassword = value::kNetworkPassword,
               .version = value::kVersion};
    if (zephra) return;
    m_names.root = kTNetRoot;
    m_names.eventManagerKey = key::kDirectory;
    m_names.managementServerKey = key::kDirectory;
    m_names.baseDirectory = value::kTNetBaseDirectory;
    m_names.home = value::kTNetHome;
    m_names.installDirectory = value::kTNetHome;
    m_names.logDirectory = value::kTNetLogDirectory;
    m_names.version = value::kTNetVersion;
}

bool DVUtilLib::Initialize(char* logFile, char* sqlFile) {
    return guarded(false, [&] {
        if (m_instanceName.empty() && !getInstanceName()) return false;
        if (m_machineName.empty() && !GetMachineNameFromReg(nullptr)) return false;
        std::array<char, kRegistryTextSize> logDir{};
        if (!GetZephraLogDir(logDir.data())) return false;
        m_logFile = cutTo(FXString::Format("%s/%s.log", logDir.data(), m_name.c_str()), kNameSize - 1);
        copyWhole(logFile, m_logFile);
        if (sqlFile == nullptr) return true;
        m_sqlFile =
            cutTo(FXString::Format("%s/%s_%d.sql", logDir.data(), m_name.c_str(), getpid()), kNameSize - 1);
        copyWhole(sqlFile, m_sqlFile);
        return true;
    });
}

bool DVUtilLib::GetMachineName(std::string& machine) {
    return guarded(false, [&] {
        if (m_instanceName.empty() && !getInstanceName()) return false;
        if (m_machineName.empty() && !GetMachineNameFromReg(nullptr)) return false;
        machine = m_machineName;
        return true;
    });
}

bool DVUtilLib::GetMachineName(std::string& machine, std::string& controlSet) {
    return guarded(false, [&] {
        if (m_instanceName.empty() && !getInstanceName()) return false;
        const bool known = machine.empty() ? GetMachineName(machine) : GetMachineNameFromReg(machine.c_str());
        if (known) controlSet = m_instanceName;
        return known;
    });
}

bool DVUtilLib::GetMachineNameFromReg(const char* machine) {
    return guarded(false, [&] {
        std::string hostName;
        const VTPlatformInfo info(m_instanceName.c_str());
        if (info.getString(registry::key::kDorvase, registry::value::kHostName, &hostName) == 0) return false;
        if (machine != nullptr && hostName != machine) {
            m_errorText = common_messages::kUnknownMachine;
            return false;
        }
        m_machineName = hostName;
        return true;
    });
}

bool DVUtilLib::GetControlSetName(std::string& controlSet) {
    return guarded(true, [&] {
        controlSet = m_instanceName;
        return true;
    });
}

bool DVUtilLib::getInstanceName() {
    return guarded(false, [&] {
        std::array<char, kNameSize> name{};
        if (!GetInstanceName(name.data())) return false;
        m_instanceName = name.data();
        return true;
    });
}

bool DVUtilLib::GetZephraBaseDir(char* dir) {
    return GetRegItemValue(m_names.baseKey, m_names.baseDirectory, dir, nullptr) ||
           failAtValue(m_names.baseKey, m_names.baseDirectory);
}

bool DVUtilLib::GetZephraInstallDir(char* dir) {
    return GetRegItemValue(m_names.baseKey, m_names.installDirectory, dir, nullptr) ||
           failAtValue(m_names.baseKey, m_names.installDirectory);
}

bool DVUtilLib::GetZephraLogDir(char* dir) {
    return GetRegItemValue(m_names.eventManagerKey, m_names.logDirectory, dir, nullptr) ||
           failAtValue(m_names.eventManagerKey, m_names.logDirectory);
}

bool DVUtilLib::GetZephraNetworkPassword(char* text) {
    return GetRegItemValue(m_names.sessionKey, m_names.networkPassword, text, nullptr);
}

bool DVUtilLib::GetZephraVersion(char* version, int& versionNumber) {
    return guarded(false, [&] {
        std::string text;
        const char* key = m_productTypeZephra ? m_names.baseKey : m_names.installKey;
        if (!readRegistryText(key, m_names.version, text, m_errorText)) return false;
        copyWhole(version, text);
        if (text.find('(') == text.npos) {
            m_errorText = FXString::Format(common_messages::kUnknownVersion, text.c_str());
            return false;
        }
        versionNumber = versionNumberOf(text);
        return true;
    });
}

bool DVUtilLib::GetZephraPlatform(unsigned int& platformType) {
    if (m_platformType == 0 &&
        !GetRegItemValue(m_names.baseKey, m_names.platformType, nullptr, &m_platformType))
        return false;
    platformType = m_platformType;
    return true;
}

bool DVUtilLib::IsMachineClusterConfigured() {
    return guarded(false, [&] {
        unsigned long type = 0;
        std::array<char, kNameSize> name{};
        return VTPlatformInfo().getRegValue(registry::key::kCluster, registry::value::kClusterName, &type,
                                            name.data(), kNameSize) != 0 &&
               name.front() != '\0';
    });
}

bool DVUtilLib::GetRegItemValue(const char* key, const char* valueName, char* text, unsigned int* number) {
    return GetRegItemValue(m_instanceName.c_str(), key, valueName, text, number);
}

bool DVUtilLib::GetRegItemValue(const char* instance, const char* key, const char* valueName, char* text,
                                unsigned int* number) {
    return GetRegistryItemValue(instance, key, valueName, number, text, m_errorText);
}

std::vector<std::string> DVUtilLib::getDVHostList() {
    return guarded(std::vector<std::string>(), [&] {
        std::vector<std::string> hosts;
        for (const auto& [instance, unused] : instancesUnder(m_names.root)) {
            std::string host;
            if (isPlatformDV(instance.c_str(), m_errorText) && readHostName(host, m_errorText))
                hosts.push_back(cutTo(host, kNameSize - 1));
        }
        return hosts;
    });
}

bool DVUtilLib::getInstanceNameFromDVHostName(char* hostName, char* instanceName) {
    if (hostName == nullptr || *hostName == '\0') return false;
    return guarded(false, [&] {
        for (const auto& [instance, unused] : instancesUnder(m_names.root)) {
            if (!isPlatformDV(instance.c_str(), m_errorText)) continue;
            std::string host;
            if (!readHostName(host, m_errorText)) {
                m_errorText.clear();
            } else if (equalIgnoringCase(host, hostName)) {
                m_instanceName = instance;
                copyWhole(instanceName, instance);
                return true;
            }
        }
        return false;
    });
}

namespace {

void sendToDebugLog(const EvDebug& log, const char* dbName, const char* tag, const char* message) {
    if (*dbName != '\0')
        log.Debug(tag, "<%s>..%s\n", dbName, message);
    else
        log.Debug(tag, "<db>..%s\n", message);
}

constexpr char kNoDatabase[] = "xx";  // log file only; the debug log says "<db>". Callers rely on both

}  // namespace

void DVUtilLib::LogTScript(const char* logFile, const char* dbName, const char* tag, const char* message) {
    guarded([&] {
        const char* database = textOrEmpty(dbName);
        const EvDebug debugLog;
        if (debugLog.IsInitialized()) {
            sendToDebugLog(debugLog, database, textOrEmpty(tag), textOrEmpty(message));
        } else if (logFile == nullptr) {
            std::printf(common_messages::kCannotOpenLog, "NULL", errno);
        } else {
            const std::string time = currentTimeString();
            appendToLog(logFile, FXString::Format("%s  %s..%s %s\n", time.c_str(),
                                                  *database != '\0' ? database : kNoDatabase,
                                                  textOrEmpty(tag), textOrEmpty(message)));
        }
    });
}

void DVUtilLib::printoutContent(const char* sourceFile, const char* logFile, bool echo) {
    const char* target = logFile != nullptr ? logFile : m_logFile.c_str();
    if (equalIgnoringCase(target, textOrEmpty(sourceFile))) target = nullptr;
    LogFileContent(sourceFile, target, echo, m_instanceName.c_str());
}

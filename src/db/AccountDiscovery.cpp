#include "AccountDiscovery.h"

#include <string.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "CallerText.h"
#include "DVUtilities/commonFunc.h"
#include "DatabaseMessages.h"
#include "DatabaseNames.h"
#include "EvDebug.h"
#include "FX.h"
#include "Registry.h"
#include "RegistryNames.h"
#include "RowText.h"
#include "SecretText.h"
#include "TextAsFormat.h"
#include "VTPassword.h"

namespace {

constexpr char kDefaultDatabase[] = "Dorvas";
constexpr std::size_t kDatabaseNameLength = 255;
constexpr std::size_t kServerInstanceLength = 511;
constexpr std::size_t kPlainCredentialsSize = 3075;
constexpr std::size_t kPasswordLength = 8192;
constexpr std::size_t kLengthDigits = 2;  // with which the deciphered credentials begin
constexpr unsigned int kWindowsAuthentication = 1;
constexpr int kZephra = 1;

// Names are interpreted as format strings; null or empty means the management database.
std::string resolvedName(const char* dbName) {
    if (*textOrEmpty(dbName) == '\0') return kDefaultDatabase;
    return textAsFormat(dbName, kDatabaseNameLength);
}

}  // namespace

const AccountDiscovery::DatabaseKind AccountDiscovery::kKinds[5] = {
    {"Dorvas", &DBBase::m_dorvas, isPlatformDV, "This is not a Dorvaser."},
    {"NQ2", &DBBase::m_nq2, isPlatformNQ2, "NQ2 is not installed."},
    {"VTCloud", &DBBase::m_vtCloud, isPlatformVTCloud, "VtCloud is not installed."},
    {"WFEngine", &DBBase::m_wfEngine, isPlatformWFEngine, "WfEngine is not installed."},
    {"HistoryDB", &DBBase::m_historyDB, isPlatformHistory, "HistoryDB is not installed."}};

const AccountDiscovery::KindValue AccountDiscovery::kServerInstances[5] = {
    {&DBBase::m_dorvas, registry::value::kInstance},
    {&DBBase::m_nq2, registry::value::kNQ2Instance},
    {&DBBase::m_vtCloud, registry::value::kCloudInstance},
    {&DBBase::m_wfEngine, registry::value::kWFInstance},
    {&DBBase::m_historyDB, registry::value::kInstance}};

const AccountDiscovery::KindValue AccountDiscovery::kCredentials[5] = {
    {&DBBase::m_dorvas, registry::value::kAccess},
    {&DBBase::m_nq2, registry::value::kNQ2Access},
    {&DBBase::m_wfEngine, registry::value::kWFAccess},
    {&DBBase::m_historyDB, registry::value::kAccess},
    {&DBBase::m_vtCloud, registry::value::kCloudAccess}};

const AccountDiscovery::KindValue AccountDiscovery::kConnections[5] = {
    {&DBBase::m_nq2, registry::value::kNQ2Connection},
    {&DBBase::m_vtCloud, registry::value::kCloudConnection},
    {&DBBase::m_wfEngine, registry::value::kWFConnection},
    {&DBBase::m_historyDB, registry::value::kHistoryConnection},
    {&DBBase::m_dorvas, registry::value::kConnection}};

bool AccountDiscovery::findAccount(const char* machineName, const char* controlSetName, const char* logFile,
                                   const char* dbName) {
    EvDebug().DebugLevel(database_messages::debug::kTrace, database_messages::debug::kGetAccount,
                         textOrEmpty(machineName), textOrEmpty(controlSetName), textOrEmpty(logFile),
                         textOrEmpty(dbName));
    copyCut(m_db.m_machineName, sizeof m_db.m_machineName, textAsFormat(textOrEmpty(machineName)));
    m_db.m_logFile = textOrEmpty(logFile);
    const std::string resolved = resolvedName(dbName);
    if (!checkHost(controlSetName, resolved)) return false;
    m_db.m_dbName = resolved;
    findAuthentication(resolved);
    return findServerInstance() && findUserAndLog(controlSetName, resolved, dbName);
}

bool AccountDiscovery::checkHost(const char* controlSetName, const std::string& dbName) {
    if (!isZephra()) {
        if (isPlatformTNet(controlSetName, m_db.m_errorMessage)) return true;
        m_db.DBLogLine(m_db.m_errorMessage, 0);
        return failAndLog(database_messages::kOnlyOnManagementServer);
    }
    for (const DatabaseKind& kind : kKinds)
        if (strcasecmp(dbName.c_str(), kind.name) == 0) return checkKind(kind, controlSetName, dbName);
    return true;
}

bool AccountDiscovery::checkKind(const DatabaseKind& kind, const char* controlSetName,
                                 const std::string& dbName) {
    m_db.*kind.flag = kind.isInstalled(controlSetName, m_db.m_errorMessage);
    return m_db.*kind.flag || failAndLog(FXString::Format(database_messages::kInvalidDatabase, dbName.c_str(),
                                                          kind.whenMissing));
}

// The database's own setting is asked before the general one.
void AccountDiscovery::findAuthentication(const std::string& dbName) {
    using registry::value::kAuthentication;
    const std::string ownName = FXString::Format("%s_%s", kAuthentication, dbName.c_str());
    unsigned int setting = 0;
    if (!readRegistryNumber(registry::key::kDatabase, ownName.c_str(), setting, m_db.m_errorMessage))
        readRegistryNumber(registry::key::kDatabase, kAuthentication, setting, m_db.m_errorMessage);
    if (setting != kWindowsAuthentication) return;
    EvDebug().DebugLevel(database_messages::debug::kTrace, "%s",
                         database_messages::debug::kWindowsAuthentication);
    m_db.m_windowsAuthentication = true;
}

bool AccountDiscovery::findServerInstance() {
    if (!isZephra()) return true;
    const char* valueName = valueNameFor(kServerInstances);
    std::string instance;
    if (valueName != nullptr)
        readRegistryText(registry::key::kDatabase, valueName, instance, m_db.m_errorMessage);
    if (instance.empty()) return failAndLog(database_messages::kNoServerName);
    m_db.m_serverInstance = cutTo(instance, kServerInstanceLength);
    return true;
}

bool AccountDiscovery::findUserAndLog(const char* controlSetName, const std::string& dbName,
                                      const char* givenName) {
    const bool found = m_db.GetDBUser(controlSetName, dbName.c_str(), m_db.m_errorMessage);
    m_db.DBLogLine(m_db.m_errorMessage, 0);
    return found || failAndLog(FXString::Format(database_messages::kNoDatabaseUser, textOrEmpty(givenName)));
}

bool AccountDiscovery::findUser(const char* controlSetName, const char* dbName, std::string& errorText) {
    EvDebug().DebugLevel(database_messages::debug::kTrace, database_messages::debug::kGetUser,
                         textOrEmpty(controlSetName), textOrEmpty(dbName));
    std::string enciphered;
    if (!readCredentials(enciphered, errorText)) return false;
    if (!takeCredentials(enciphered)) {
        errorText = database_messages::kCredentialsNotRead;
        return false;
    }
    if (!readDataSource(errorText) || !m_db.DBTest()) return false;
    errorText = FXString::Format(database_messages::kConnected, textOrEmpty(dbName), m_db.m_dataSource);
    return true;
}

bool AccountDiscovery::readCredentials(std::string& enciphered, std::string& errorText) const {
    const char* valueName = isZephra() ? valueNameFor(kCredentials) : nullptr;
    return valueName == nullptr ||
           readRegistryText(registry::key::kDatabase, valueName, enciphered, errorText);
}

bool AccountDiscovery::takeCredentials(const std::string& enciphered) {
    std::array<char, kPlainCredentialsSize> plain{};
    unsigned long size = plain.size();
    VTPassword cipher;
    cipher.putEncPwd(enciphered.c_str());
    // What could not be deciphered leaves no length to read.
    const bool taken = cipher.decrypt(plain.data(), &size) != 0 && takeUserAndPassword(plain.data());
    explicit_bzero(plain.data(), plain.size());
    return taken;
}

// Two digits N, N bytes of user name, the password. A text that ends within the user name has no password.
bool AccountDiscovery::takeUserAndPassword(const char* plain) {
    const std::string_view text = plain;
    const int length = leadingNumber(std::string(text.substr(0, kLengthDigits)));
    if (length <= 0) return false;
    const std::string_view rest = text.substr(std::min(kLengthDigits, text.size()));
    const std::string_view user = rest.substr(0, static_cast<std::size_t>(length));
    m_db.m_userName = user;
    wipe(m_db.m_password);
    m_db.m_password = rest.substr(user.size(), kPasswordLength);
    return true;
}

bool AccountDiscovery::readDataSource(std::string& errorText) {
    const char* valueName = isZephra() ? valueNameFor(kConnections) : nullptr;
    if (valueName == nullptr) return true;
    std::string dataSource;
    if (!readRegistryText(registry::key::kDatabase, valueName, dataSource, errorText)) return false;
    copyCut(m_db.m_dataSource, sizeof m_db.m_dataSource, dataSource);
    return true;
}

const char* AccountDiscovery::valueNameFor(std::span<const KindValue> values) const {
    for (const KindValue& value : values)
        if (m_db.*value.flag) return value.valueName;
    return nullptr;
}

bool AccountDiscovery::isZephra() const {
    return m_db.m_productType == kZephra;
}

bool AccountDiscovery::failAndLog(const std::string& message) {
    m_db.m_errorMessage = message;
    m_db.DBLogLine(m_db.m_errorMessage, 0);
    return false;
}

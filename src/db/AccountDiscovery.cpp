#include "AccountDiscovery.h"

#include <string.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "CallerText.h"
#include "Causes.h"
#include "CommonMessages.h"
#include "DVUtilities/commonFunc.h"
#include "EvDebug.h"
#include "FX.h"
#include "LetterCase.h"
#include "Registry.h"
#include "RegistryNames.h"
#include "RowText.h"
#include "SecretText.h"
#include "TextAsFormat.h"
#include "VTPassword.h"
#include "direct/DirectConnection.h"
#include "parts/DatabaseMessages.h"
#include "parts/DatabaseNames.h"

namespace {

constexpr std::size_t kDatabaseNameLength = 255;
constexpr std::size_t kServerInstanceLength = 511;
constexpr std::size_t kPlainCredentialsSize = 3075;
constexpr std::size_t kPasswordLength = 8192;
constexpr std::size_t kLengthDigits = 2;  // at the beginning of the decrypted credentials
constexpr unsigned int kWindowsAuthentication = 1;

// Names are interpreted as format strings; null or empty means the management database.
std::string resolvedName(const char* dbName) {
    if (*textOrEmpty(dbName) == '\0') return kManagementDatabase;
    return textAsFormat(dbName, kDatabaseNameLength);
}

bool readDatabaseValue(const char* valueName, std::string& text, std::string& errorText) {
    if (readRegistryText(registry::key::kDatabase, valueName, text, errorText)) return true;
    reportConfiguration(registry::key::kDatabase, valueName, common_messages::kValueMissing);
    return false;
}

}  // namespace

// A database of the suite and the check that its component is installed on this host.
struct AccountDiscovery::Component {
    const char* database;
    DatabaseKind kind;
    bool (*isInstalled)(const char* instance, std::string& errorText);
    const char* whenMissing;
    const char *key, *valueName;  // of the configuration value that isInstalled() reads
};

const AccountDiscovery::Component AccountDiscovery::kComponents[] = {
    {"Dorvas", DatabaseKind::kDorvas, isPlatformDV, "This is not a Dorvaser.", registry::key::kBase,
     registry::value::kPlatformType},
    {"NQ2", DatabaseKind::kNQ2, isPlatformNQ2, "NQ2 is not installed.", registry::key::kNQ2Package,
     registry::value::kInstallState},
    {"VTCloud", DatabaseKind::kVTCloud, isPlatformVTCloud, "VtCloud is not installed.",
     registry::key::kVTCloudPackage, registry::value::kInstallState},
    {"WFEngine", DatabaseKind::kWFEngine, isPlatformWFEngine, "WfEngine is not installed.",
     registry::key::kWFEnginePackage, registry::value::kInstallState},
    {"HistoryDB", DatabaseKind::kHistoryDB, isPlatformHistory, "HistoryDB is not installed.",
     registry::key::kHistoryPackage, registry::value::kInstallState}};

// The configuration value to read when its database's flag is set. The first such row decides. Flags are
// never cleared, so after look-ups of two databases the tables' different orders matter.
struct AccountDiscovery::KindValue {
    DatabaseKind kind;
    const char* valueName;
};

const AccountDiscovery::KindValue AccountDiscovery::kServerInstances[] = {
    {DatabaseKind::kDorvas, registry::value::kInstance},
    {DatabaseKind::kNQ2, registry::value::kNQ2Instance},
    {DatabaseKind::kVTCloud, registry::value::kCloudInstance},
    {DatabaseKind::kWFEngine, registry::value::kWFInstance},
    {DatabaseKind::kHistoryDB, registry::value::kInstance}};

const AccountDiscovery::KindValue AccountDiscovery::kCredentials[] = {
    {DatabaseKind::kDorvas, registry::value::kAccess},
    {DatabaseKind::kNQ2, registry::value::kNQ2Access},
    {DatabaseKind::kWFEngine, registry::value::kWFAccess},
    {DatabaseKind::kHistoryDB, registry::value::kAccess},
    {DatabaseKind::kVTCloud, registry::value::kCloudAccess}};

const AccountDiscovery::KindValue AccountDiscovery::kConnections[] = {
    {DatabaseKind::kNQ2, registry::value::kNQ2Connection},
    {DatabaseKind::kVTCloud, registry::value::kCloudConnection},
    {DatabaseKind::kWFEngine, registry::value::kWFConnection},
    {DatabaseKind::kHistoryDB, registry::value::kHistoryConnection},
    {DatabaseKind::kDorvas, registry::value::kConnection}};

bool AccountDiscovery::findAccount(const char* machineName, const char* controlSetName, const char* logFile,
                                   const char* dbName) {
    EvDebug().DebugLevel(database_messages::debug::kTrace, database_messages::debug::kGetAccount,
                         textOrEmpty(machineName), textOrEmpty(controlSetName), textOrEmpty(logFile),
                         textOrEmpty(dbName));
    copyCut(m_db.machineName, sizeof m_db.machineName, textAsFormat(textOrEmpty(machineName)));
    m_db.logFile = textOrEmpty(logFile);
    const std::string resolved = resolvedName(dbName);
    if (!checkHost(controlSetName, resolved)) return false;
    m_db.account.dbName = resolved;
    readAuthentication(resolved);
    return readServerInstance() && findUserAndLog(controlSetName, resolved, dbName);
}

bool AccountDiscovery::checkHost(const char* controlSetName, const std::string& dbName) {
    if (!isZephra()) {
        if (isPlatformTNet(controlSetName, m_db.report.message)) return true;
        m_db.report.log(m_db.report.message);
        return m_db.report.fail(database_messages::kOnlyOnManagementServer);
    }
    for (const Component& component : kComponents)
        if (equalIgnoringCase(dbName, component.database))
            return checkComponent(component, controlSetName, dbName);
    return true;
}

bool AccountDiscovery::checkComponent(const Component& component, const char* controlSetName,
                                      const std::string& dbName) {
    const bool installed = component.isInstalled(controlSetName, m_db.report.message);
    flagOf(component.kind) = installed;
    if (installed) return true;
    reportConfiguration(component.key, component.valueName, component.whenMissing);
    return m_db.report.fail(
        FXString::Format(database_messages::kInvalidDatabase, dbName.c_str(), component.whenMissing));
}

// The database's own setting has precedence over the general one.
void AccountDiscovery::readAuthentication(const std::string& dbName) {
    using registry::value::kAuthentication;
    const std::string ownName = FXString::Format("%s_%s", kAuthentication, dbName.c_str());
    unsigned int setting = 0;
    if (!readRegistryNumber(registry::key::kDatabase, ownName.c_str(), setting, m_db.report.message))
        readRegistryNumber(registry::key::kDatabase, kAuthentication, setting, m_db.report.message);
    if (setting != kWindowsAuthentication) return;
    EvDebug().DebugLevel(database_messages::debug::kTrace, "%s",
                         database_messages::debug::kWindowsAuthentication);
    m_db.account.windowsAuthentication = true;
}

bool AccountDiscovery::readServerInstance() {
    if (!isZephra()) return true;
    const char* valueName = valueNameFor(kServerInstances);
    if (valueName == nullptr) return failAtUnknownDatabase();
    std::string instance;
    readRegistryText(registry::key::kDatabase, valueName, instance, m_db.report.message);
    if (instance.empty()) {
        reportConfiguration(registry::key::kDatabase, valueName, common_messages::kValueMissing);
        return m_db.report.fail(database_messages::kNoServerName);
    }
    m_db.account.serverInstance = cutTo(instance, kServerInstanceLength);
    return true;
}

// Always false. No value name belongs to the database: "TNet", or a name that the suite does not have.
bool AccountDiscovery::failAtUnknownDatabase() {
    noteCause({.where = kDVUConfiguration,
               .text = FXString::Format(database_messages::kUnknownDatabase, m_db.account.dbName.c_str())});
    return m_db.report.fail(database_messages::kNoServerName);
}

bool AccountDiscovery::findUserAndLog(const char* controlSetName, const std::string& dbName,
                                      const char* givenName) {
    const bool found = findUser(controlSetName, dbName.c_str(), m_db.report.message);
    m_db.report.log(m_db.report.message);
    return found ||
           m_db.report.fail(FXString::Format(database_messages::kNoDatabaseUser, textOrEmpty(givenName)));
}

bool AccountDiscovery::findUser(const char* controlSetName, const char* dbName, std::string& errorText) {
    EvDebug().DebugLevel(database_messages::debug::kTrace, database_messages::debug::kGetUser,
                         textOrEmpty(controlSetName), textOrEmpty(dbName));
    std::string encrypted;
    if (!readCredentials(encrypted, errorText)) return false;
    if (!decryptCredentials(encrypted)) {
        const char* valueName = isZephra() ? valueNameFor(kCredentials) : nullptr;
        reportConfiguration(registry::key::kDatabase, textOrEmpty(valueName),
                            database_messages::kCredentialsUnusable);
        errorText = database_messages::kCredentialsNotRead;
        return false;
    }
    if (!readDataSource(errorText) || !probe()) return false;
    errorText = FXString::Format(database_messages::kConnected, textOrEmpty(dbName), m_db.account.dataSource);
    return true;
}

bool AccountDiscovery::readCredentials(std::string& encrypted, std::string& errorText) const {
    const char* valueName = isZephra() ? valueNameFor(kCredentials) : nullptr;
    return valueName == nullptr || readDatabaseValue(valueName, encrypted, errorText);
}

bool AccountDiscovery::decryptCredentials(const std::string& encrypted) {
    std::array<char, kPlainCredentialsSize> plain{};
    unsigned long size = plain.size();
    VTPassword cipher;
    cipher.putEncPwd(encrypted.c_str());
    const bool parsed = cipher.decrypt(plain.data(), &size) != 0 && parseCredentials(plain.data());
    explicit_bzero(plain.data(), plain.size());
    return parsed;
}

// Format: two digits N, N bytes of user name, then the password. Credentials that end within the user name
// have an empty password.
bool AccountDiscovery::parseCredentials(const char* plain) {
    const std::string_view text = plain;
    const int length = leadingNumber(std::string(text.substr(0, kLengthDigits)));
    if (length <= 0) return false;
    const std::string_view rest = text.substr(std::min(kLengthDigits, text.size()));
    const std::string_view user = rest.substr(0, static_cast<std::size_t>(length));
    m_db.account.userName = user;
    wipe(m_db.account.password);
    m_db.account.password = rest.substr(user.size(), kPasswordLength);
    return true;
}

bool AccountDiscovery::readDataSource(std::string& errorText) {
    const char* valueName = isZephra() ? valueNameFor(kConnections) : nullptr;
    if (valueName == nullptr) return true;
    std::string dataSource;
    if (!readDatabaseValue(valueName, dataSource, errorText)) return false;
    copyCut(m_db.account.dataSource, sizeof m_db.account.dataSource, dataSource);
    return true;
}

bool AccountDiscovery::probe() {
    return DirectConnection(m_db.account, m_db.connection).executeOnce(m_db.probeQuery.c_str());
}

const char* AccountDiscovery::valueNameFor(std::span<const KindValue> values) const {
    for (const KindValue& value : values)
        if (flagOf(value.kind)) return value.valueName;
    return nullptr;
}

bool& AccountDiscovery::flagOf(DatabaseKind kind) const {
    return *m_db.kindFlags[static_cast<std::size_t>(kind)];
}

bool AccountDiscovery::isZephra() const {
    return m_db.productType == kZephra;
}

// Discovery of server, authentication and credentials of one of the suite's databases in the configuration.
#pragma once

#include <span>
#include <string>

#include "parts/DatabaseParts.h"

inline constexpr int kZephra = 1;  // product type

// The steps of DBBase::GetAccountInfo() and GetDBUser(). `const char*` arguments may be null.
class AccountDiscovery {
  public:
    explicit AccountDiscovery(const DatabaseParts& db) : m_db(db) {}

    bool findAccount(const char* machineName, const char* controlSetName, const char* logFile,
                     const char* dbName);
    bool findUser(const char* controlSetName, const char* dbName, std::string& errorText);

  private:
    struct Component;
    static const Component kComponents[kDatabaseKinds];
    struct KindValue;
    const char* valueNameFor(std::span<const KindValue> values) const;
    static const KindValue kServerInstances[kDatabaseKinds];
    static const KindValue kCredentials[kDatabaseKinds];
    static const KindValue kConnections[kDatabaseKinds];

    bool& flagOf(DatabaseKind kind) const;
    bool isZephra() const;

    // findAccount(), in order
    bool checkHost(const char* controlSetName, const std::string& dbName);
    bool checkComponent(const Component& component, const char* controlSetName, const std::string& dbName);
    void readAuthentication(const std::string& dbName);
    bool readServerInstance();
    bool failAtUnknownDatabase();
    bool findUserAndLog(const char* controlSetName, const std::string& dbName, const char* givenName);

    // findUser(), in order
    bool readCredentials(std::string& encrypted, std::string& errorText) const;
    bool decryptCredentials(const std::string& encrypted);
    bool parseCredentials(const char* plain);
    bool readDataSource(std::string& errorText);
    bool probe();

    DatabaseParts m_db;
};

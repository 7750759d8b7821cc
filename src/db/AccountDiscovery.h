// Finds server, authentication and credentials of one of the suite's databases in the configuration.
#pragma once

#include <span>
#include <string>

#include "DVUtilities/DBBase.h"

// The steps behind DBBase::GetAccountInfo() and GetDBUser(), on that object's settings. Texts that callers
// pass may be null.
class AccountDiscovery {
  public:
    explicit AccountDiscovery(DBBase& db) : m_db(db) {}

    bool findAccount(const char* machineName, const char* controlSetName, const char* logFile,
                     const char* dbName);
    bool findUser(const char* controlSetName, const char* dbName, std::string& errorText);

  private:
    // One of the suite's databases, and the check that its component is installed on this host.
    struct DatabaseKind {
        const char* name;
        bool DBBase::*flag;
        bool (*isInstalled)(const char* instance, std::string& errorText);
        const char* whenMissing;
    };
    static const DatabaseKind kKinds[5];

    // A value to read when its kind's flag is set. The tables are searched from the first row on; their
    // orders differ, which tells once an object has looked for two databases: flags are never taken back.
    struct KindValue {
        bool DBBase::*flag;
        const char* valueName;
    };
    static const KindValue kServerInstances[5];
    static const KindValue kCredentials[5];
    static const KindValue kConnections[5];

    const char* valueNameFor(std::span<const KindValue> values) const;
    bool isZephra() const;

    // findAccount(), in order
    bool checkHost(const char* controlSetName, const std::string& dbName);
    bool checkKind(const DatabaseKind& kind, const char* controlSetName, const std::string& dbName);
    void findAuthentication(const std::string& dbName);
    bool findServerInstance();
    bool findUserAndLog(const char* controlSetName, const std::string& dbName, const char* givenName);

    // findUser(), in order
    bool readCredentials(std::string& enciphered, std::string& errorText) const;
    bool takeCredentials(const std::string& enciphered);
    bool takeUserAndPassword(const char* plain);
    bool readDataSource(std::string& errorText);

    bool failAndLog(const std::string& message);

    DBBase& m_db;
};

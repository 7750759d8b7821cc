#include "direct/DirectConnection.h"

#include <memory>
#include <utility>

#include "Causes.h"
#include "EvDebug.h"
#include "SecretText.h"
#include "VTSimpleDBConn.h"
#include "parts/DatabaseMessages.h"

namespace {
constexpr bool kEncrypted = false;  // the driver's own settings decide
constexpr bool kReadOnly = false;
}  // namespace

bool DirectConnection::open(const char* dataSource, const char* userName, const char* password) {
    const char* user = userName != nullptr ? userName : m_account.userName.c_str();
    EvDebug().DebugLevel(database_messages::debug::kTrace, database_messages::debug::kOpen,
                         dataSource != nullptr ? dataSource : m_account.dataSource, user);
    const ExplainedStep step;
    if (m_connection == nullptr) m_connection = new VTSimpleDBConnObject;
    const SecretText target(
        m_connection->getConnectionString(m_account.serverInstance.c_str(), m_account.dbName.c_str(), user,
                                          password != nullptr ? password : m_account.password.c_str(),
                                          m_account.windowsAuthentication, kEncrypted));
    // The platform layer has reported why there is no connection string; an attempt would add another reason.
    const bool isRefused = target.text().empty() && step.isExplained();
    if (!isRefused && m_connection->OpenSQLConnectionUsingConnectionString(target.c_str(), kReadOnly) == 0)
        return true;
    EvDebug().Debug("Open", "%s", database_messages::debug::kOpenFailed);
    step.noteUnlessExplained({.where = kDVUConnection,
                              .server = m_account.serverInstance,
                              .text = database_messages::debug::kOpenFailed});
    return false;
}

void DirectConnection::close() {
    const std::unique_ptr<VTSimpleDBConnObject> connection(std::exchange(m_connection, nullptr));
    if (connection != nullptr) connection->CloseSQLConnection();
}

bool DirectConnection::execute(const char* sql) {
    const ExplainedStep step;
    if (m_connection != nullptr && m_connection->executeQuery(sql, /*prepared=*/false) == 0) return true;
    step.noteUnlessExplained(
        m_connection == nullptr
            ? DVUCause_t{.where = kDVUConnection, .text = database_messages::kNotOpen}
            : DVUCause_t{.where = kDVUStatement, .text = database_messages::kStatementFailed});
    return false;
}

bool DirectConnection::executeOnce(const char* sql) {
    if (!open() || !execute(sql)) return false;
    close();
    return true;
}

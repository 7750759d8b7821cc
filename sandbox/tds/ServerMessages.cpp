#include "ServerMessages.h"

#include <string>

#include "messages/Messages.h"

namespace tds {
namespace {

using tsql::SqlError;

// Severities other than 16, the default of SqlError.
constexpr int kSeverityDatabase = 11;
constexpr int kSeverityLogin = 14;
constexpr int kSeverityResources = 17;
constexpr int kSeverityFatal = 20;

constexpr int kTsqlboxError = 50000;  // for errors that SQL Server does not have

std::string inQuotes(std::string_view text, char quote = '\'') {
    return quote + std::string(text) + quote;
}

}  // namespace

SqlError loginFailed(std::string_view user) {
    return {kLoginFailed, "Login failed for user " + inQuotes(user) + ".", kSeverityLogin};
}

SqlError integratedLoginNotSupported() {
    return {kUntrustedLogin,
            "Login failed. Integrated authentication is not supported; use a login name and a password.",
            kSeverityLogin};
}

SqlError integratedLoginFailed() {
    return {kUntrustedLogin,
            "Login failed. The login is from an untrusted domain and cannot be used with Integrated "
            "authentication.",
            kSeverityLogin};
}

SqlError databaseNotFound(std::string_view database) {
    return {4060,
            "Cannot open database " + inQuotes(database, '"') + " requested by the login. The login failed.",
            kSeverityDatabase};
}

tsql::Message databaseContextChanged(std::string_view database) {
    return {5701, 0, 2, 1, {}, "Changed database context to " + inQuotes(database) + "."};
}

tsql::Message languageChanged(std::string_view language) {
    return {5703, 0, 1, 1, {}, "Changed language setting to " + std::string(language) + "."};
}

SqlError parameterNotSupplied(std::string_view procedure, std::size_t position) {
    return {201, "Procedure or function " + inQuotes(procedure) + " expects parameter number " +
                     std::to_string(position) + ", which was not supplied."};
}

SqlError parameterValueInvalid(std::size_t position, std::string_view name, std::string_view type) {
    return tsql::sqlError(8023, {std::to_string(position), name, type});
}

SqlError parameterTypeNotSupported(std::uint8_t wireType) {
    return tsql::unsupported("parameters of TDS type " + std::to_string(wireType));
}

SqlError xmlSchemaNotSupported() {
    return tsql::unsupported("xml parameters with a schema");
}

SqlError numericOverflow() {
    return {8115, "Arithmetic overflow error converting numeric to data type numeric."};
}

SqlError preparedStatementNotFound(std::int64_t handle) {
    return {8179, "Could not find prepared statement with handle " + std::to_string(handle) + "."};
}

SqlError statementNotPrepared() {
    return {8180, "Statement(s) could not be prepared."};
}

SqlError tooManyPreparedStatements() {
    return {701, "There are too many prepared statements in this session.", kSeverityResources};
}

SqlError transactionRequestNotSupported(std::uint16_t type) {
    return {kTsqlboxError, "Transaction manager request " + std::to_string(type) +
                               " is not supported: tsqlbox has no distributed transactions."};
}

SqlError requestTooLong() {
    return {kTsqlboxError, "The request is too long. A batch or procedure call may have 64 MiB."};
}

SqlError valueNotSent(std::string_view reason) {
    return {8114, std::string(reason)};
}

SqlError internalError(std::string_view reason) {
    return {kTsqlboxError, "Internal error of tsqlbox: " + std::string(reason), kSeverityFatal};
}

tsql::Message messageOf(const SqlError& error) {
    return {error.number, error.severity, error.state, 1, {}, error.what()};
}

}  // namespace tds

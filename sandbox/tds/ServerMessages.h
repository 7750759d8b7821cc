// Messages of SQL Server that the protocol layer sends itself. The engine's are in its own message table.
#pragma once

#include <cstdint>
#include <string_view>

#include "execute/Client.h"
#include "messages/Message.h"

namespace tds {

// ---- Login ----

constexpr int kLoginFailed = 18456;
constexpr int kUntrustedLogin = 18452;
tsql::SqlError loginFailed(std::string_view user);
tsql::SqlError integratedLoginNotSupported();
tsql::SqlError integratedLoginFailed();
tsql::SqlError databaseNotFound(std::string_view database);
tsql::Message databaseContextChanged(std::string_view database);
tsql::Message languageChanged(std::string_view language);

// ---- Procedure calls ----

// position: of the parameter in the call, from 1.
tsql::SqlError parameterNotSupplied(std::string_view procedure, std::size_t position);
tsql::SqlError parameterValueInvalid(std::size_t position, std::string_view name, std::string_view type);
tsql::SqlError parameterTypeNotSupported(std::uint8_t wireType);
tsql::SqlError xmlSchemaNotSupported();
tsql::SqlError numericOverflow();
tsql::SqlError preparedStatementNotFound(std::int64_t handle);
tsql::SqlError statementNotPrepared();
tsql::SqlError tooManyPreparedStatements();

// ---- Other requests, and results ----

tsql::SqlError transactionRequestNotSupported(std::uint16_t type);
tsql::SqlError requestTooLong();
// A result value that cannot be sent in the type of its column.
tsql::SqlError valueNotSent(std::string_view reason);
// A fault of the server. It ends the session.
tsql::SqlError internalError(std::string_view reason);

// An error as a message of a batch's first line.
tsql::Message messageOf(const tsql::SqlError& error);

}  // namespace tds

// Numbers of SQL Server's messages, named for what their texts say.
#pragma once

namespace tsql::message {

#define TSQL_MESSAGE(name, number, severity, state, ends, text) inline constexpr int name = number;
#include "messages/MessageTable.inc"
#undef TSQL_MESSAGE

// Texts of these are composed where they are raised.
inline constexpr int kSyntaxErrorNear = 102;
inline constexpr int kSyntaxErrorNearKeyword = 156;
inline constexpr int kStatementTerminated = 3621;
inline constexpr int kUserDefined = 50000;

}  // namespace tsql::message

// Messages to the client, the error that becomes one, and SQL Server's messages by number.
#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tsql {

// An error or informational message (PRINT has severity 0).
struct Message {
    int number = 0;
    int severity = 0;  // above 10: error; 20 and above: ends the session
    int state = 1;
    int line = 1;           // line of the batch or procedure, from 1
    std::string procedure;  // empty outside of procedures
    std::string text;       // UTF-8
};

// The engine's only exception type: an error with SQL Server's number, severity and state.
struct SqlError : std::runtime_error {
    SqlError(int errorNumber, const std::string& text, int errorSeverity = 16, int errorState = 1)
        : std::runtime_error(text), number(errorNumber), severity(errorSeverity), state(errorState) {}

    int number;
    int severity;  // as Message::severity
    int state;
};

// Numbers of SQL Server's messages, named for what their texts say.
#define TSQL_MESSAGE(name, number, severity, state, ends, text) inline constexpr int name = number;
#include "messages/MessageTable.inc"
#undef TSQL_MESSAGE

inline constexpr int kUserDefined = 50000;  // with a text of its own

// Returns the error of that number. Each %s in its text is replaced by the next of `values`. `state` replaces
// the table's state unless it is 0, for numbers that SQL Server raises with several states.
SqlError sqlError(int number, std::initializer_list<std::string_view> values = {}, int state = 0);

// What an error ends outside of TRY. Scope: the procedure or batch, but not the transaction, as for errors
// that a compiler would find. Batch: the batch, whose transaction is rolled back.
enum class Ends { Statement, Scope, Batch };
struct MessageText {
    int number, severity, state;
    Ends ends;
    std::string_view text;
};
const MessageText* findMessage(int number);  // null for a number without a text in the table
Ends endOf(int number);

// Error 50000 for a construct that tsqlbox does not support.
SqlError unsupported(std::string_view construct);

}  // namespace tsql

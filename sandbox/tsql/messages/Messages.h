// SQL Server's error messages by number.
#pragma once

#include <initializer_list>
#include <string_view>

#include "messages/Numbers.h"
#include "messages/SqlError.h"

namespace tsql {

// Returns the error of that number. Each %s in its text is replaced by the next of `values`. `state` replaces
// the table's state unless it is 0, for numbers that SQL Server raises with several states.
SqlError sqlError(int number, std::initializer_list<std::string_view> values = {}, int state = 0);

// What an error ends outside of TRY. Scope: the procedure or batch, but not the transaction, as for errors
// that a compiler would find. Batch: the batch, whose transaction is rolled back.
enum class Ends { Statement, Scope, Batch };
Ends endOf(int number);

// Error 50000 for a construct that tsqlbox does not support.
SqlError unsupported(std::string_view construct);

}  // namespace tsql

// Registers the functions, aggregates and collation in a SQLite connection.
#pragma once

#include "functions/FunctionContext.h"

struct sqlite3;

namespace tsql {

// Throws std::runtime_error.
void registerFunctions(sqlite3* connection, FunctionContext& context);

}  // namespace tsql

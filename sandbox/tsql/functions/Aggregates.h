// T-SQL's aggregates, as SQLite aggregates.
#pragma once

#include "functions/FunctionContext.h"

struct sqlite3;

namespace tsql {

void registerAggregates(sqlite3* connection, FunctionContext& context);

}  // namespace tsql

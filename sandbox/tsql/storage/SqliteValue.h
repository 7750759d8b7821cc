// Values in their storage form to and from SQLite.
#pragma once

#include "types/SqlType.h"

struct sqlite3_context;
struct sqlite3_value;

namespace tsql {

CellView viewOf(sqlite3_value* value);
void giveResult(sqlite3_context* call, const Value& value);  // of a function of SQLite

}  // namespace tsql

// DB-Library's column types and values, converted to those of ODBC.
#pragma once

// ODBC's and DB-Library's headers both define RETCODE.
#define RETCODE DBRETCODE
// clang-format off
#include <sybfront.h>  // must come first
#include <sybdb.h>
// clang-format on
#undef RETCODE

#include <string>

#include "client/Client.h"

namespace sqlcmd {

// Metadata of a column of the current result; columns are counted from 1.
ColumnInfo describeColumn(DBPROCESS* process, int number);

struct ValueType {
    int type;   // DB-Library's
    int scale;  // decimal places of a time of day
};

ValueType valueTypeOf(DBPROCESS* process, int number);

// Appends the string that FreeTDS's ODBC driver returns for the column's value in the current row, but no
// more of it than that of the first `enough` bytes of a string or binary value (RunningBatch::kWholeValue:
// all). Returns false for NULL.
bool appendColumnValue(DBPROCESS* process, int number, const ValueType& type, std::size_t enough,
                       TextBuffer& text);

}  // namespace sqlcmd

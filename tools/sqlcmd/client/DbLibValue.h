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
#include <string_view>

#include "client/Client.h"

namespace sqlcmd {

// Metadata of a column of the current result; columns are counted from 1.
ColumnInfo describeColumn(DBPROCESS* process, int number);

struct CellType {
    int type;          // DB-Library's
    int scale;         // decimal places of a time of day
    bool isConverted;  // the cell has the string, not DB-Library's value
};

CellType cellTypeOf(DBPROCESS* process, int number);

// Appends the column's value in the current row as a cell, but no more than `enough` bytes of a string or
// binary value (RunningBatch::kWholeValue: all).
void appendColumnCell(DBPROCESS* process, int number, const CellType& type, std::size_t enough,
                      std::string& row);

// Appends the string that FreeTDS's ODBC driver returns for the value.
void appendCellValue(const CellType& type, std::string_view cell, std::string& text);

}  // namespace sqlcmd

// The rows of a statement's result set, column by column as UTF-8 text.
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "Odbc.h"

namespace hostlayer {

enum class Fetched { kRow, kEnd, kFailure };

struct ColumnDescription {
    SQLSMALLINT type = 0;
    std::size_t textBytes = 0;  // the longest value's text with its NUL; 0: it may be of any length
};

// Describes the columns of the statement's present result set.
bool describeColumns(const OdbcHandle& statement, std::vector<ColumnDescription>& columns);

class RowReader {
  public:
    virtual ~RowReader() = default;
    // Fills one entry a column; no value means NULL. The texts stay until the next call.
    virtual Fetched next(std::vector<std::optional<std::string_view>>& values) = 0;
};

// Binds the columns: a block of rows at a time when all of them have a bound on their length, else one row at
// a time in pieces of whatever number is needed (drivers do not offer both together). Null on a failure.
// The statement must live longer than the reader.
std::unique_ptr<RowReader> makeRowReader(const OdbcHandle& statement,
                                         const std::vector<ColumnDescription>& columns);

}  // namespace hostlayer

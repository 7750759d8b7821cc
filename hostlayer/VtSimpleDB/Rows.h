// Reading the rows of a statement's result set, with every value as a UTF-8 string.
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
    std::size_t textBytes = 0;  // size of the longest value, its NUL included; 0: no limit
};

// Appends the descriptions of the columns of the statement's current result set. False on a failure.
bool describeColumns(const OdbcHandle& statement, std::vector<ColumnDescription>& columns);

class RowReader {
  public:
    virtual ~RowReader() = default;

    // Reads the next row into `values`, which has one entry per column; nullopt is NULL. The views are valid
    // until the next call.
    virtual Fetched next(std::vector<std::optional<std::string_view>>& values) = 0;
    // Returns whether next() returns without a call of the driver.
    virtual bool hasBufferedRow() const = 0;
};

// Returns a reader, or null on a failure. Rows are fetched in blocks if the length of every column is
// limited, else one at a time with long values in pieces: drivers do not support both together. The statement
// must outlive the reader.
std::unique_ptr<RowReader> makeRowReader(const OdbcHandle& statement,
                                         const std::vector<ColumnDescription>& columns);

}  // namespace hostlayer

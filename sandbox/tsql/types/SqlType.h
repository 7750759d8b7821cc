// T-SQL's types and the storage form of their values in SQLite.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace tsql {

enum class TypeId : std::uint8_t {
#define TSQL_TYPE(id, ...) id,
#include "types/TypeTable.inc"
#undef TSQL_TYPE
};

// Type of a column, variable or expression.
//
// Storage in SQLite, the same in tables, variables and results:
//   Bit..BigInt                 INTEGER
//   Decimal, SmallMoney, Money  INTEGER scaled by 10^scale (money: scale 4), which keeps it exact
//   Decimal above 18 digits     BLOB: the same in 16 bytes, big-endian with the sign bit flipped, so that
//                               SQLite sorts them as numbers
//   Real, Float                 REAL
//   Char..Xml                   TEXT, UTF-8 (Char and NChar padded with blanks to their length)
//   Date                        TEXT "YYYY-MM-DD"
//   Time                        TEXT "hh:mm:ss.fffffff" with `scale` digits (none: no point)
//   DateTime                    TEXT "YYYY-MM-DD hh:mm:ss.mmm"
//   SmallDateTime               TEXT "YYYY-MM-DD hh:mm:00"
//   DateTime2                   TEXT as DateTime with `scale` digits
//   DateTimeOffset              TEXT as DateTime2, local, with the offset: " +hh:mm"
//   UniqueIdentifier            TEXT, 36 characters, upper case
//   Binary..RowVersion          BLOB (RowVersion: the number of the change in 8 bytes, big-endian)
struct SqlType {
    static constexpr int kMax = -1;  // length of varchar(max), nvarchar(max), varbinary(max)

    TypeId id = TypeId::Int;
    int length = 0;              // characters (bytes for Binary, VarBinary) or kMax; else 0
    std::uint8_t precision = 0;  // Decimal: 1 to 38
    std::uint8_t scale = 0;      // Decimal, Money: digits after the point; of a second: 0 to 7

    bool operator==(const SqlType&) const = default;
};

struct Null {
    auto operator<=>(const Null&) const = default;
};

// A value in its storage form. Views stay valid until the next row is fetched.
using Blob = std::basic_string_view<std::byte>;
using CellView = std::variant<Null, std::int64_t, double, std::string_view, Blob>;
using Cells = std::span<const CellView>;  // of a row, or the arguments of a function

// Owning counterpart of CellView.
using Bytes = std::basic_string<std::byte>;
using Value = std::variant<Null, std::int64_t, double, std::string, Bytes>;

// A column of a result set.
struct Column {
    std::string name;  // empty for an unnamed expression
    SqlType type;
    bool nullable = true;
    bool identity = false;
    std::string own = {};  // its name in the stored table; empty: an expression
};

// Receiver of rows with their columns, and what sends rows to one.
using RowHandler = std::function<void(std::span<const Column>, Cells)>;
using RowSource = std::function<void(const RowHandler&)>;

}  // namespace tsql

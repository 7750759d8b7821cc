// Fragments of SQLite's SQL with their T-SQL types, and the operators and conversions that combine them.
//
// The translator builds expressions bottom-up from Typed fragments. The emit... functions combine fragments
// and insert the conversions that T-SQL's rules require. They may repeat a fragment, so parameters in
// fragments are numbered or named (?1, @x), never a bare ?.
#pragma once

#include "types/Values.h"

namespace tsql {

// SQL whose value is in the storage form of `type`. As an argument also a date part, or the * of COUNT(*).
struct Typed {
    std::string sql;
    SqlType type;
    bool nullLiteral = false;  // the literal NULL: adopts the type of the other operand
    // Value of an integer literal, for arguments that must be literals, such as lengths and styles.
    std::optional<std::int64_t> integer = {};
    int chain = 0;         // number of operators if `sql` is a call of ts_arithmetic
    bool nullable = true;  // may be NULL
};

Typed literal(const TypedValue& constant);
inline Typed nullLiteral() {
    return literal({});
}
// `sql` is the constant as a literal, or the parameter to which it is bound.
Typed typedConstant(std::string sql, const TypedValue& constant);

using Pieces = std::span<const Typed>;

// Names of the collations of strings and datetimeoffset, for COLLATE in table definitions and ORDER BY.
inline constexpr const char *kCollation = "ts_ci", *kUtcCollation = "ts_utc";

Typed emitBinary(BinaryOp op, const Typed& left, const Typed& right);
Typed emitNegate(const Typed& value);
Typed emitBitNot(const Typed& value);
// Comparisons and LIKE are conditions, not T-SQL values: SQLite's 0, 1 or NULL.
std::string emitCompare(CompareOp op, const Typed& left, const Typed& right);
std::string emitLike(const Typed& value, const Typed& pattern, const Typed* escape);
// CAST/CONVERT/TRY_...; `style` may be null.
Typed emitConvert(const Typed& value, const SqlType& to, const Typed* style, Conversion kind);
// Implicit conversion of CASE branches, UNION columns, variables and arguments to `to`.
Typed coerce(const Typed& value, const SqlType& to);
// Conversion for a column. A string that is too long is error 2628, which names table and column.
Typed emitAssign(const Typed& value, const SqlType& to, std::string_view table, std::string_view column);
// A number as an identity of that type: error 8115 if it does not fit.
Typed emitIdentity(const std::string& number, const SqlType& type);
// Common type, ignoring NULL literals; int if there are only NULL literals.
SqlType commonType(std::span<const Typed> pieces);
// Common type for a comparison: an error if decimals would lose digits.
SqlType comparedType(std::span<const Typed> pieces);
// `sql` with the collation that its type is compared, ordered and grouped by, if it has one. Throws
// SqlError `refusal` for types that are not compared.
std::string collated(const Typed& value, int refusal = kTypeNotComparable);
// `sql` as a key that is equal for equal values: as collated(), and binary strings without zeros at the end.
std::string comparable(const Typed& value);

// A row count that SQLite fails with `error` when it is NULL or below `least`.
std::string checkedRowCount(const std::string& sql, int least, int error);

}  // namespace tsql

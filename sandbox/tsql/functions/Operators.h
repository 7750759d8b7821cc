// T-SQL's operators and conversions: how each is written in SQLite, and the type of its result.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "functions/Typed.h"
#include "messages/Numbers.h"
#include "types/SqlTypes.h"

namespace tsql {

struct ScalarFunction;

// The collation's name, for COLLATE in table definitions and ORDER BY.
inline constexpr std::string_view kCollation = "ts_ci";

Typed emitBinary(BinaryOp op, const Typed& left, const Typed& right);
Typed emitNegate(const Typed& value);
Typed emitBitNot(const Typed& value);
// Comparisons and LIKE give SQLite's 0, 1 or NULL: conditions, not T-SQL values.
std::string emitCompare(CompareOp op, const Typed& left, const Typed& right);
std::string emitLike(const Typed& value, const Typed& pattern, const Typed* escape);
// CAST/CONVERT/TRY_...; `style` may be null.
Typed emitConvert(const Typed& value, const SqlType& to, const Typed* style, Conversion kind);
// What CASE branches, UNION columns, variables and arguments get: the value in the form of `to`.
Typed coerce(const Typed& value, const SqlType& to);
// The value for a column: too long a text is error 2628, which names table and column.
Typed emitAssign(const Typed& value, const SqlType& to, std::string_view table, std::string_view column);
// The common type of pieces, NULL literals aside (int when there is nothing else).
SqlType commonType(std::span<const Typed> pieces);
// The same, where values are compared in it: an error when decimals lose digits there.
SqlType comparedType(std::span<const Typed> pieces);
// `sql` with the collation that texts are compared, ordered and grouped by; other types as they are. Throws
// SqlError `refusal` for types that are not compared.
std::string collated(const Typed& value, int refusal = message::kTypeNotComparable);

// A row count that SQLite fails with `error` when it is NULL or below `least`.
std::string checkedRowCount(const std::string& sql, int least, int error);
// The functions of SQLite that do their work.
std::span<const ScalarFunction> operatorFunctions();

}  // namespace tsql

// Fragments of SQLite's SQL with their T-SQL types.
//
// The translator builds expressions bottom-up from Typed fragments. The emit... functions combine fragments
// and insert the conversions that T-SQL's rules require. They may repeat a fragment, so parameters in
// fragments are numbered or named (?1, @x), never a bare ?.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "types/SqlType.h"
#include "types/Values.h"

namespace tsql {

// SQL whose value is in the storage form of `type`.
struct Typed {
    std::string sql;
    SqlType type;
    bool nullLiteral = false;  // the literal NULL: adopts the type of the other operand
    // Value of an integer literal, for arguments that must be literals, such as lengths and styles.
    std::optional<std::int64_t> integer = {};
    std::string word = {};  // a name instead of a value: a date part, the * of COUNT(*)
    int chain = 0;          // number of operators if `sql` is a call of ts_arithmetic
    bool joined = false;    // `sql` is a concatenation of strings
    bool nullable = true;   // may be NULL
};

Typed nullLiteral();
Typed literal(const TypedValue& constant);
// `sql` is the constant as a literal, or the parameter to which it is bound.
Typed typedConstant(std::string sql, const TypedValue& constant);
Typed wordArgument(std::string_view word);

using Pieces = std::span<const Typed>;

}  // namespace tsql

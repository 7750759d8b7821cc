// The pieces that SQLite's SQL is written from.
//
// The translator builds expressions bottom-up from Typed pieces. The emit... functions take pieces, put in
// the conversions that T-SQL's rules ask for, and give back the piece of the whole. A piece may come to stand
// more than once in the whole: parameters in it are numbered or named (?1, @x), never a bare ?.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "types/SqlType.h"
#include "types/Values.h"

namespace tsql {

// SQLite text whose value is in the storage form of `type`.
struct Typed {
    std::string sql;
    SqlType type;
    bool nullLiteral = false;  // the literal NULL: takes the type of its partner
    // The value of an integer literal: lengths and styles come from it.
    std::optional<std::int64_t> integer = {};
    std::string word = {};  // a bare name in place of a value: a date part, the * of COUNT(*)
    int chain = 0;          // operators in `sql` when it is one call of ts_arithmetic
    bool joined = false;    // `sql` is texts strung together
    bool nullable = true;   // may be NULL, for all that is known
};

Typed nullLiteral();
Typed literal(const TypedValue& constant);
Typed typedConstant(std::string sql, const TypedValue& constant);  // which `sql` stands for
Typed wordArgument(std::string_view word);

using Pieces = std::span<const Typed>;

}  // namespace tsql

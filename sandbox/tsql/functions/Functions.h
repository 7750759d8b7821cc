// T-SQL's built-in functions and operators: how each is written in SQLite, the type of its result, and the
// functions that are registered in SQLite to do the work.
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
#include <utility>

#include "types/DateTime.h"
#include "types/SqlTypes.h"
#include "types/Values.h"

struct sqlite3;

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

enum class CompareOp { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

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
std::string collated(const Typed& value, int refusal = 306);

struct FunctionInfo;
// Null when T-SQL has no such built-in function here. Any case.
const FunctionInfo* findFunction(std::string_view name);
// Ranking: needs OVER with an ORDER BY. Framed: the same, and takes a frame.
enum class FunctionKind { Scalar, Aggregate, Ranking, Framed };
FunctionKind kindOf(const FunctionInfo& function);
bool takesDatePart(const FunctionInfo& function);  // the first argument is a bare name: wordArgument()
// Throws SqlError 174/189 for a wrong number of arguments, 8116 for a type that the function does not take.
Typed emitCall(const FunctionInfo& function, std::span<const Typed> arguments, bool distinct = false);

class Executor;  // the session

// The functions' side of one connection; must outlive it.
class FunctionContext {
  public:
    // Null: none of the functions that ask the session will be called.
    explicit FunctionContext(Executor* session) : m_session(session) {}

    // GETDATE() is the same in all rows of a statement: forgets the time of the last one, and its error.
    void beginStatement() {
        m_now.reset();
        m_error.reset();
        m_nullLeftOut = false;
    }
    const Now& now() { return m_now ? *m_now : m_now.emplace(timeNow()); }
    Executor& session() { return *m_session; }

    // An error that a function raised stands here after SQLite has returned SQLITE_ERROR.
    void setError(const SqlError& error) { m_error = error; }
    std::optional<SqlError> takeError() { return std::exchange(m_error, std::nullopt); }
    // An aggregate has left out a NULL.
    void noteNullLeftOut() { m_nullLeftOut = true; }
    bool takeNullLeftOut() { return std::exchange(m_nullLeftOut, false); }

  private:
    Executor* m_session;
    std::optional<Now> m_now;
    std::optional<SqlError> m_error;
    bool m_nullLeftOut = false;
};

// The collation's name, for COLLATE in table definitions and ORDER BY.
inline constexpr std::string_view kCollation = "ts_ci";

// Registers all functions, aggregates and the collation. Throws std::runtime_error.
void registerFunctions(sqlite3* connection, FunctionContext& context);

}  // namespace tsql

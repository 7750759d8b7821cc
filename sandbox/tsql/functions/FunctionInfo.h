// A built-in function of T-SQL: what it takes, what it gives, and how its calls are written.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "functions/FunctionKind.h"
#include "functions/SqliteFunction.h"
#include "functions/Typed.h"

namespace tsql {

// Always the same type, or one that depends on the arguments.
class ResultType {
  public:
    using Rule = SqlType (*)(Pieces arguments);
    ResultType(TypeId id) : m_fixed(simpleType(id)) {}
    ResultType(const SqlType& type) : m_fixed(type) {}
    ResultType(Rule rule) : m_rule(rule) {}
    SqlType of(Pieces arguments) const { return m_rule ? m_rule(arguments) : m_fixed; }

  private:
    SqlType m_fixed;
    Rule m_rule = nullptr;
};

struct FunctionInfo;
using Writer = std::string (*)(const FunctionInfo& function, Pieces arguments, const SqlType& result);
// An argument in a pattern, not one of its marks.
constexpr bool isArgument(char letter) {
    return letter >= 'A' && letter <= 'Z';
}
// NAME(piece, ...), with the codes of types that the pattern asks for.
std::string listed(std::string_view name, const FunctionInfo& function, Pieces pieces, const SqlType& result);
// ts_NAME(arguments)
std::string writeOwn(const FunctionInfo& function, Pieces arguments, const SqlType& result);

// A function of T-SQL. What it takes is a pattern:
//   T text        other types are converted    I int, B bigint, F float
//   L the same, and the types text and ntext, too
//   C text or binary alone, made text           N number, text becomes float
//   S the same, as it is
//   D date or time, text becomes datetime2(7), numbers datetime; E the same, but text becomes datetime, too
//   P the bare name of a date part              A any type
//   [ begins the optional ones                  * the last one may be repeated
// and # hands the SQLite function the code of the type of the argument before it, = that of the result.
struct FunctionInfo {
    // One that SQLite has as ts_NAME.
    FunctionInfo(std::string_view called, std::string_view takes, ResultType gives,
                 Value (*runs)(const Call& call), Nulls nulls = Nulls::GiveNull, Purity purity = Purity::Pure)
        : name(called),
          arguments(takes),
          result(gives),
          scalar{"ts_" + std::string(called), runs, nulls, purity},
          write(writeOwn) {}
    // One that is written in terms of others; the arguments are converted already.
    FunctionInfo(std::string_view called, std::string_view takes, ResultType gives, Writer writes,
                 FunctionKind of = FunctionKind::Scalar)
        : name(called), arguments(takes), result(gives), scalar{}, write(writes), kind(of) {}

    std::string_view name;
    std::string_view arguments;
    ResultType result;
    ScalarFunction scalar;
    Writer write;
    FunctionKind kind = FunctionKind::Scalar;
};

std::span<const FunctionInfo> textFunctions();
std::span<const FunctionInfo> mathFunctions();
std::span<const FunctionInfo> dateFunctions();
std::span<const FunctionInfo> sessionFunctions();

// ABS, ROUND, SUM ... work in int at least.
SqlType numberType(Pieces arguments);
SqlType sameAsFirst(Pieces arguments);
SqlType grownText(Pieces arguments);  // REPLACE and the like: 8000 bytes, or (max) when the first argument is

}  // namespace tsql

// Built-in functions of T-SQL: arguments, result type, and the SQL of their calls.
#pragma once

#include <concepts>

#include "functions/Operators.h"
#include "functions/SqliteFunction.h"

namespace tsql {

// Ranking: requires OVER with ORDER BY. Framed: as Ranking, and allows a frame.
enum class FunctionKind { Scalar, Aggregate, Ranking, Framed };

// Result type: fixed, or computed from the arguments.
class ResultType {
  public:
    using Rule = SqlType (*)(Pieces arguments);
    ResultType(TypeId id) : m_fixed(simpleType(id)) {}
    ResultType(const SqlType& type) : m_fixed(type) {}
    template <std::convertible_to<Rule> F>
    ResultType(F rule) : m_rule(rule) {}
    SqlType of(Pieces arguments) const { return m_rule ? m_rule(arguments) : m_fixed; }

  private:
    SqlType m_fixed;
    Rule m_rule = nullptr;
};

struct FunctionInfo;
using Writer = std::string (*)(const FunctionInfo& function, Pieces arguments, const SqlType& result);
// Whether a character of a pattern is an argument.
constexpr bool isArgument(char letter) {
    return letter >= 'A' && letter <= 'Z';
}
// NAME(argument, ...) with the function's name in SQLite and the type codes of the pattern.
std::string writeCall(const FunctionInfo& function, Pieces arguments, const SqlType& result);

// A built-in function. The pattern of its arguments:
//   T  string; other types are converted       I int   B bigint   F float   A any type
//   L  as T, also accepts text and ntext       N  number; a string becomes float
//   C  string or binary, converted to string   S  string or binary, not converted
//   D  date or time; a string becomes datetime2(7), a number datetime
//   E  as D, but a string becomes datetime     R  any type, converted to that of the result
//   P  name of a date part
//   [  begins the optional arguments           *  the last argument may be repeated
//   #  passes the type code of the previous argument to the SQLite function   =  passes that of the result
//   ~, 0 as in ScalarFunction::traits
struct FunctionInfo {
    // A function that is registered in SQLite as ts_NAME.
    FunctionInfo(std::string_view called, std::string_view takes, ResultType gives,
                 Value (*runs)(const SqlCall& call))
        : name(called), arguments(takes), result(gives), scalar{"ts_" + std::string(called), takes, runs} {}
    // A function or aggregate of SQLite, or one that is registered elsewhere.
    FunctionInfo(std::string_view called, std::string_view takes, ResultType gives, const char* inSqlite,
                 FunctionKind of = FunctionKind::Scalar)
        : name(called), arguments(takes), result(gives), scalar{inSqlite, takes, nullptr}, kind(of) {}
    // A function that is written with other functions. The writer gets converted arguments.
    FunctionInfo(std::string_view called, std::string_view takes, ResultType gives, Writer writes,
                 FunctionKind of = FunctionKind::Scalar)
        : name(called), arguments(takes), result(gives), scalar{}, write(writes), kind(of) {}

    bool takesDatePart() const { return arguments.starts_with('P'); }  // a name; see wordArgument()

    std::string_view name;
    std::string_view arguments;
    ResultType result;
    ScalarFunction scalar;  // its name is that of the function in SQLite
    Writer write = writeCall;
    FunctionKind kind = FunctionKind::Scalar;
};

// Case-insensitive. Throws SqlError 195 for an unknown function.
const FunctionInfo& functionNamed(const std::string& name);
// Throws SqlError 174 or 189 for a wrong number of arguments, 8116 for an argument type that is not allowed.
Typed emitCall(const FunctionInfo& function, std::span<const Typed> arguments, bool distinct = false);

extern const std::span<const FunctionInfo> kTextFunctions, kMathFunctions, kDateFunctions, kSessionFunctions;

// Throws SqlError 9806 or 9810 if the last argument has no such part as the first one names.
void checkDatePart(Pieces arguments, std::string_view function);

// Result type of ABS, ROUND, SUM ...: at least int.
SqlType numberType(Pieces arguments);
SqlType sameAsFirst(Pieces arguments);
SqlType grownText(Pieces arguments);  // REPLACE ...: 8000 bytes, or (max) if the first argument is

}  // namespace tsql

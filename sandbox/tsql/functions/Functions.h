// Built-in functions of T-SQL: arguments, result type, and the SQL of their calls.
#pragma once

#include "functions/Operators.h"
#include "functions/SqliteFunction.h"

namespace tsql {

// Ranking: requires OVER with ORDER BY. Framed: as Ranking, and allows a frame.
enum class FunctionKind { Scalar, Aggregate, Ranking, Framed };

// Result type: fixed, or computed from the arguments.
using TypeRule = SqlType (*)(Pieces arguments);
using ResultType = std::variant<TypeId, SqlType, TypeRule>;

struct FunctionInfo;
using Writer = std::string (*)(const FunctionInfo& function, Pieces arguments, const SqlType& result);

// A built-in function. The pattern of its arguments:
//   A  any type   F  float   X  number or date, not converted   H  as T, but dates only if datetime
//   T  string; other types are converted       I  int; a number only: J
//   L  as T, also accepts text and ntext       V  as T, but others become nvarchar
//   C  string or binary, converted to string   S  string or binary, not converted or the literal NULL
//   N  number; a string or bit becomes float   W  as I, but only integers and decimals
//   D  date or time; a string becomes datetimeoffset(7), a number datetime
//   E  as D, but a string becomes datetime     M  as D, but no number
//   P  name of a date part, not evaluated      R  any type, converted to that of the result
//   Q  operand of an aggregate, that is compared: O, added: U, converted to float: G
//   [  begins the optional arguments           *  the last argument may be repeated
//   #  passes the type code of the previous argument to the SQLite function   =  passes that of the result
//   ~, 0 as in ScalarFunction::traits
struct FunctionInfo {
    std::string_view name;
    std::string_view arguments;
    ResultType result;
    // The function to register in SQLite as ts_NAME; or the name of one that SQLite has, or that is
    // registered elsewhere; or what writes it with other functions, and gets converted arguments.
    std::variant<SqlFunction, const char*, Writer> body;
    FunctionKind kind = FunctionKind::Scalar;
    bool takesDatePart() const { return arguments.starts_with('P'); }
};

// Case-insensitive. Throws SqlError 195 for an unknown function.
const FunctionInfo& functionNamed(const std::string& name);
// Throws SqlError 174 or 189 for a wrong number of arguments, 8116 for an argument type that is not allowed.
Typed emitCall(const FunctionInfo& function, std::span<const Typed> arguments, bool distinct = false);

extern const std::vector<FunctionInfo> kTextFunctions, kMathFunctions, kDateFunctions, kSessionFunctions;

// Throws SqlError 9806 or 9810 if the last argument has no such part as the first one names.
void checkDatePart(Pieces arguments, std::string_view function);

// Result type of ABS, ROUND, SUM ...: at least int.
SqlType numberType(Pieces arguments);
template <int leastScale>  // of a decimal, which has 38 digits
SqlType totalType(Pieces arguments) {
    const SqlType type = numberType(arguments);
    return type.id == TypeId::Decimal ? decimalType(38, std::max<int>(type.scale, leastScale)) : type;
}
// REPLACE ...: 8000 bytes, or (max) if the first argument is; nvarchar if an argument is.
SqlType grownText(Pieces arguments);

}  // namespace tsql

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
struct FunctionInfo {
    // A function that is registered in SQLite as ts_NAME.
    FunctionInfo(std::string_view called, std::string_view takes, ResultType gives,
                 Value (*runs)(const SqlCall& call), Nulls nulls = Nulls::GiveNull,
                 Purity purity = Purity::Pure)
        : name(called),
          arguments(takes),
          result(gives),
          scalar{"ts_" + std::string(called), runs, nulls, purity} {}
    // A function or aggregate of SQLite, or one that is registered elsewhere.
    FunctionInfo(std::string_view called, std::string_view takes, ResultType gives, const char* inSqlite,
                 FunctionKind of = FunctionKind::Scalar)
        : name(called), arguments(takes), result(gives), scalar{inSqlite, nullptr}, kind(of) {}
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

// Functions that SQL Server has and tsqlbox has not, in lower case.
inline constexpr std::string_view kMissingFunctions =
    " "
    "approx_count_distinct applock_mode applock_test binary_checksum checksum checksum_agg "
    "collationproperty columns_updated compress connectionproperty context_info current_request_id "
    "current_timezone current_transaction_id datetimeoffsetfromparts decompress decryptbypassphrase "
    "difference encryptbypassphrase eventdata file_id file_name filegroup_name fileproperty format "
    "formatmessage has_perms_by_name host_id index_col indexproperty is_rolemember isjson json_modify "
    "json_query json_value objectpropertyex parse percentile_cont percentile_disc "
    "pwdcompare pwdencrypt rowcount_big session_context soundex sql_variant_property stats_date "
    "string_escape suser_id suser_sid switchoffset sysdatetimeoffset todatetimeoffset trigger_nestlevel "
    "try_parse typeproperty user_id ";
// Returns null for an unknown function. Case-insensitive.
const FunctionInfo* findFunction(std::string_view name);
std::array<std::span<const FunctionInfo>, 5> allFunctions();
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

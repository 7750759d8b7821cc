// What the functions registered in SQLite share: one call's arguments, and the tables they are listed in.
#pragma once

#include <array>
#include <span>

#include "functions/Functions.h"

namespace tsql {

class Call {
  public:
    Call(FunctionContext& context, std::span<const CellView> arguments)
        : m_context(context), m_arguments(arguments) {}

    FunctionContext& context() const { return m_context; }
    std::size_t count() const { return m_arguments.size(); }
    const CellView& operator[](std::size_t i) const { return m_arguments[i]; }
    std::span<const CellView> arguments() const { return m_arguments; }
    bool isBlob(std::size_t i) const { return std::holds_alternative<Blob>(m_arguments[i]); }
    std::string_view text(std::size_t i) const { return std::get<std::string_view>(m_arguments[i]); }
    std::int64_t integer(std::size_t i) const { return std::get<std::int64_t>(m_arguments[i]); }
    double real(std::size_t i) const {
        const auto* integer = std::get_if<std::int64_t>(&m_arguments[i]);
        return integer ? static_cast<double>(*integer) : std::get<double>(m_arguments[i]);
    }
    SqlType type(std::size_t i) const { return decodeType(integer(i)); }
    SqlType resultType() const { return type(count() - 1); }
    DateTime dateTime(std::size_t i) const { return fromStorage(text(i)); }

  private:
    FunctionContext& m_context;
    std::span<const CellView> m_arguments;
};

CellView viewOf(struct sqlite3_value* value);

// The arguments with which SQLite calls a function.
class Arguments {
  public:
    Arguments(int count, struct sqlite3_value** values) : m_count(static_cast<std::size_t>(count)) {
        for (std::size_t i = 0; i < m_count; ++i) m_views[i] = viewOf(values[i]);
    }
    std::span<const CellView> views() const { return {m_views.data(), m_count}; }

  private:
    static constexpr std::size_t kMost = 127;  // SQLite's own limit
    std::array<CellView, kMost> m_views;
    std::size_t m_count;
};

enum class Nulls { GiveNull, Reach };  // a NULL argument is the result, or reaches the function
enum class Purity { Pure, Varying };   // Pure: the same arguments give the same value

// A function of SQLite.
struct ScalarFunction {
    std::string name;
    Value (*run)(const Call& call);
    Nulls nulls = Nulls::GiveNull;
    Purity purity = Purity::Pure;
};

using Pieces = std::span<const Typed>;

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
std::array<std::span<const FunctionInfo>, 5> allFunctions();
// Those that T-SQL does not have; the translator writes their calls.
std::span<const ScalarFunction> operatorFunctions();
std::span<const ScalarFunction> queryFunctions();
void registerAggregates(sqlite3* connection, FunctionContext& context);

// ABS, ROUND, SUM ... work in int at least.
SqlType numberType(Pieces arguments);
SqlType sameAsFirst(Pieces arguments);
SqlType grownText(Pieces arguments);  // REPLACE and the like: 8000 bytes, or (max) when the first argument is

// The error that an exception now being handled stands for goes to the context and to SQLite.
void reportError(FunctionContext& context, struct sqlite3_context* call);
void giveResult(struct sqlite3_context* call, const Value& value);

}  // namespace tsql

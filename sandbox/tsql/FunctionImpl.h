// What the functions registered in SQLite share: one call's arguments, and the tables they are listed in.
#pragma once

#include <array>
#include <span>

#include "Functions.h"

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

struct ScalarFunction {
    const char* name;
    Value (*run)(const Call& call);
    Nulls nulls = Nulls::GiveNull;
    Purity purity = Purity::Pure;
};

std::span<const ScalarFunction> operatorFunctions();
std::span<const ScalarFunction> textFunctions();
std::span<const ScalarFunction> mathFunctions();
std::span<const ScalarFunction> dateFunctions();
std::span<const ScalarFunction> sessionFunctions();
void registerAggregates(sqlite3* connection, FunctionContext& context);

// The error that an exception now being handled stands for goes to the context and to SQLite.
void reportError(FunctionContext& context, struct sqlite3_context* call);
void giveResult(struct sqlite3_context* call, const Value& value);

}  // namespace tsql

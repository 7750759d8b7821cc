// Functions registered in SQLite, and the arguments of a call.
#pragma once

#include <array>

#include "functions/FunctionSession.h"

namespace tsql {

// A call of a function by SQLite.
class SqlCall {
  public:
    SqlCall(FunctionSession& session, int count, struct sqlite3_value** values)
        : m_session(session), m_count(static_cast<std::size_t>(count)) {
        for (std::size_t i = 0; i < m_count; ++i) m_arguments[i] = viewOf(values[i]);
    }

    FunctionSession& session() const { return m_session; }
    std::size_t count() const { return m_count; }
    const CellView& operator[](std::size_t i) const { return m_arguments[i]; }
    Cells arguments() const { return {m_arguments.data(), m_count}; }
    std::string_view text(std::size_t i) const { return std::get<std::string_view>(m_arguments[i]); }
    std::int64_t integer(std::size_t i) const { return std::get<std::int64_t>(m_arguments[i]); }
    double real(std::size_t i) const {
        const auto* integer = std::get_if<std::int64_t>(&m_arguments[i]);
        return integer ? static_cast<double>(*integer) : std::get<double>(m_arguments[i]);
    }
    DatePart datePart() const { return static_cast<DatePart>(integer(0)); }
    SqlType type(std::size_t i) const { return decodeType(integer(i)); }
    SqlType resultType() const { return type(count() - 1); }
    DateTime dateTime(std::size_t i) const { return fromStorage(text(i)); }

  private:
    static constexpr std::size_t kMost = 127;  // SQLite's own limit
    FunctionSession& m_session;
    std::array<CellView, kMost> m_arguments;
    std::size_t m_count;
};

using SqlFunction = Value (*)(const SqlCall& call);
// A scalar function to register in SQLite. Its traits:
//   ~  the same arguments may give another value
//   0  NULLs are passed to it; else a NULL argument makes the result NULL
struct ScalarFunction {
    std::string name;
    std::string_view traits;
    SqlFunction run;
    bool has(char trait) const { return traits.find(trait) != std::string_view::npos; }
};

// What SQLite passes to the functions that are registered in it.
template <typename Function>
struct Binding {
    FunctionSession& session;
    const Function function;
    static void destroy(void* binding) { delete static_cast<Binding*>(binding); }
};

// Functions that do the work of operators; functions for queries and system views, which T-SQL lacks.
extern const std::vector<ScalarFunction> kOperatorFunctions, kQueryFunctions;
void registerAggregates(struct sqlite3* connection, FunctionSession& session);

// Passes the exception being handled to the session and to SQLite as an error.
void reportError(FunctionSession& session, struct sqlite3_context* call);

}  // namespace tsql

// State that the functions registered in a SQLite connection share between calls.
#pragma once

#include <optional>
#include <utility>

#include "functions/FunctionSession.h"
#include "messages/Message.h"
#include "types/DateTime.h"

namespace tsql {

// State of the functions of one connection. Must outlive the connection.
class FunctionContext {
  public:
    // `session` may be null if no function that needs it is called.
    explicit FunctionContext(FunctionSession* session) : m_session(session) {}

    // Resets the time, because GETDATE() is constant within a statement, and the error.
    void beginStatement() {
        m_now.reset();
        m_error.reset();
        m_nullLeftOut = false;
    }
    const Now& now() { return m_now ? *m_now : m_now.emplace(timeNow()); }
    FunctionSession& session() { return *m_session; }

    // The error that a function raised, valid after SQLite has returned SQLITE_ERROR.
    void setError(const SqlError& error) { m_error = error; }
    std::optional<SqlError> takeError() { return std::exchange(m_error, std::nullopt); }
    // Records that an aggregate skipped a NULL.
    void noteNullLeftOut() { m_nullLeftOut = true; }
    bool takeNullLeftOut() { return std::exchange(m_nullLeftOut, false); }

  private:
    FunctionSession* m_session;
    std::optional<Now> m_now;
    std::optional<SqlError> m_error;
    bool m_nullLeftOut = false;
};

// Registers the functions, aggregates and collation in a SQLite connection. Throws std::runtime_error.
void registerFunctions(struct sqlite3* connection, FunctionContext& context);

}  // namespace tsql

// What the functions registered in one SQLite connection keep between their calls.
#pragma once

#include <optional>
#include <utility>

#include "functions/FunctionSession.h"
#include "messages/SqlError.h"
#include "types/DateTime.h"

namespace tsql {

// The functions' side of one connection; must outlive it.
class FunctionContext {
  public:
    // Null: none of the functions that ask the session will be called.
    explicit FunctionContext(FunctionSession* session) : m_session(session) {}

    // GETDATE() is the same in all rows of a statement: forgets the time of the last one, and its error.
    void beginStatement() {
        m_now.reset();
        m_error.reset();
        m_nullLeftOut = false;
    }
    const Now& now() { return m_now ? *m_now : m_now.emplace(timeNow()); }
    FunctionSession& session() { return *m_session; }

    // An error that a function raised stands here after SQLite has returned SQLITE_ERROR.
    void setError(const SqlError& error) { m_error = error; }
    std::optional<SqlError> takeError() { return std::exchange(m_error, std::nullopt); }
    // An aggregate has left out a NULL.
    void noteNullLeftOut() { m_nullLeftOut = true; }
    bool takeNullLeftOut() { return std::exchange(m_nullLeftOut, false); }

  private:
    FunctionSession* m_session;
    std::optional<Now> m_now;
    std::optional<SqlError> m_error;
    bool m_nullLeftOut = false;
};

}  // namespace tsql

// Prepared statements of a session, and the procedure calls that use them.
#pragma once

#include <map>

#include "execute/Client.h"

namespace tds {

// How a procedure call is carried out.
struct CallPlan {
    std::optional<tsql::ProcedureCall> run = {};               // call for the engine, if any
    std::optional<tsql::ProcedureCall::Argument> handle = {};  // output value: a new statement's handle
    int ordinalShift = 0;  // from the place of an argument in `run` to its place in the client's call
};

class PreparedStatements {
  public:
    // Turns sp_prepare, sp_prepexec, sp_execute and sp_unprepare into calls of sp_executesql. Other calls are
    // not changed. Throws tsql::SqlError for missing arguments and unknown handles.
    CallPlan plan(tsql::ProcedureCall call);
    // Deletes a statement. An unknown handle is not an error.
    void forget(const tsql::ProcedureCall::Argument& handle);

  private:
    using Argument = tsql::ProcedureCall::Argument;
    using Arguments = std::vector<Argument>;
    CallPlan planPrepare(tsql::ProcedureCall call);
    CallPlan planRun(tsql::ProcedureCall call, std::size_t own);
    Argument prepare(Arguments& arguments);
    tsql::ProcedureCall executeSqlCall(const Argument& handle, std::span<Argument> values) const;

    std::map<std::int64_t, Arguments> m_statements;  // by handle: SQL text and parameter declarations
    std::int64_t m_lastHandle = 0;
};

}  // namespace tds

// The statements that a client prepared, and its calls that work on them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "Engine.h"

namespace tds {

// What a call comes to.
struct CallPlan {
    std::optional<tsql::ProcedureCall> run;
    std::optional<tsql::ProcedureCall::Argument> handle;  // of a statement that was prepared, to be sent back
};

// The prepared statements of one session.
class PreparedStatements {
  public:
    // Calls that deal with prepared statements are rewritten, all others stay. Throws tsql::SqlError.
    CallPlan plan(tsql::ProcedureCall call);
    // A statement that could not be prepared leaves no handle.
    void forget(const tsql::ProcedureCall::Argument& handle);

  private:
    using Arguments = std::vector<tsql::ProcedureCall::Argument>;
    tsql::ProcedureCall::Argument add(Arguments& arguments);
    const Arguments& find(const tsql::ProcedureCall::Argument& handle) const;

    std::map<std::int64_t, Arguments> m_statements;  // text and declarations
    std::int64_t m_lastHandle = 0;
};

}  // namespace tds

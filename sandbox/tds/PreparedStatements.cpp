#include "PreparedStatements.h"

#include <iterator>

#include "types/SqlTypes.h"
#include "types/Text.h"

namespace tds {
namespace {

using tsql::ProcedureCall;

constexpr std::size_t kMaxStatements = 10'000;
constexpr int kResourceSeverity = 17;

// Arguments that precede the statement's own: of sp_prepare and sp_prepexec the handle, the declarations and
// the SQL text; of sp_execute and sp_unprepare the handle.
constexpr std::size_t kPrepareArguments = 3;
constexpr std::size_t kHandleArguments = 1;

// Arguments of sp_executesql that precede the statement's own: the SQL text and the declarations.
constexpr int kExecuteSqlArguments = 2;

constexpr std::int64_t kReturnMetadata = 1;  // bit of sp_prepare's option

void requireArguments(const ProcedureCall& call, std::size_t count) {
    if (call.arguments.size() < count)
        throw tsql::sqlError(tsql::message::kMissingParameter,
                             {call.procedure, std::to_string(call.arguments.size() + 1)});
}

std::int64_t integerOf(const ProcedureCall::Argument& argument) {
    const auto* number = std::get_if<std::int64_t>(&argument.value);
    return number ? *number : 0;
}

}  // namespace

CallPlan PreparedStatements::plan(ProcedureCall call) {
    const std::string name = tsql::lowerAscii(call.procedure);
    if (name == "sp_prepare") return planPrepare(std::move(call));
    if (name == "sp_prepexec") return planRun(std::move(call), kPrepareArguments);
    if (name == "sp_execute") return planRun(std::move(call), kHandleArguments);
    if (name != "sp_unprepare") return {std::move(call)};
    requireArguments(call, kHandleArguments);
    forget(call.arguments[0]);
    return {};
}

CallPlan PreparedStatements::planPrepare(ProcedureCall call) {
    requireArguments(call, kPrepareArguments);
    const bool wantsMetadata = call.arguments.size() > kPrepareArguments &&
                               (integerOf(call.arguments[kPrepareArguments]) & kReturnMetadata) != 0;
    CallPlan plan;
    plan.handle = prepare(call.arguments);
    if (wantsMetadata) {
        plan.run = executeSqlCall(*plan.handle, {});
        plan.run->describeOnly = true;
    }
    return plan;
}

// own: number of arguments that precede the statement's own.
CallPlan PreparedStatements::planRun(ProcedureCall call, std::size_t own) {
    requireArguments(call, own);
    CallPlan plan;
    if (own == kPrepareArguments) plan.handle = prepare(call.arguments);
    plan.run = executeSqlCall(plan.handle ? *plan.handle : call.arguments[0],
                              std::span(call.arguments).subspan(own));
    plan.ordinalShift = static_cast<int>(own) - kExecuteSqlArguments;
    return plan;
}

// Stores the statement in `arguments` and returns its handle as an output value. The statement whose handle
// the client passed is replaced.
ProcedureCall::Argument PreparedStatements::prepare(Arguments& arguments) {
    forget(arguments[0]);
    if (m_statements.size() >= kMaxStatements)
        throw tsql::SqlError(tsql::message::kInsufficientMemory,
                             "There are too many prepared statements in this session.", kResourceSeverity);
    Argument& declarations = arguments[1];
    Argument& text = arguments[2];
    declarations.name.clear();  // sp_executesql has other names for them
    text.name.clear();
    m_statements[++m_lastHandle] = {std::move(text), std::move(declarations)};
    return {std::move(arguments[0].name), tsql::simpleType(tsql::TypeId::Int), m_lastHandle, /*output=*/true};
}

ProcedureCall PreparedStatements::executeSqlCall(const Argument& handle, std::span<Argument> values) const {
    const auto statement = m_statements.find(integerOf(handle));
    if (statement == m_statements.end())
        throw tsql::sqlError(tsql::message::kPreparedStatementNotFound, {std::to_string(integerOf(handle))});
    ProcedureCall call{"sp_executesql", statement->second};
    call.arguments.insert(call.arguments.end(), std::move_iterator(values.begin()),
                          std::move_iterator(values.end()));
    return call;
}

void PreparedStatements::forget(const ProcedureCall::Argument& handle) {
    m_statements.erase(integerOf(handle));
}

}  // namespace tds

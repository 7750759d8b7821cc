#include "PreparedStatements.h"

#include <iterator>

#include "SqlError.h"
#include "Text.h"

namespace tds {
namespace {

using tsql::ProcedureCall;
using tsql::SqlError;
using Arguments = std::vector<ProcedureCall::Argument>;

constexpr std::size_t kMostStatements = 10'000;
constexpr std::string_view kExecuteSql = "sp_executesql";

// Bit of sp_prepare's option: tell the columns.
constexpr std::int64_t kReturnMetadata = 1;

void require(const ProcedureCall& call, std::size_t count) {
    if (call.arguments.size() < count)
        throw SqlError(201, "Procedure or function '" + call.procedure + "' expects parameter number " +
                                std::to_string(call.arguments.size() + 1) + ", which was not supplied.");
}

std::int64_t numberOf(const ProcedureCall::Argument& argument) {
    const auto* number = std::get_if<std::int64_t>(&argument.value);
    return number ? *number : 0;
}

}  // namespace

CallPlan PreparedStatements::plan(ProcedureCall call) {
    const std::string name = tsql::lowerAscii(call.procedure);
    const bool isPrepare = name == "sp_prepare";
    const bool prepares = isPrepare || name == "sp_prepexec";
    if (!prepares && name != "sp_execute" && name != "sp_unprepare") return {std::move(call), {}};
    Arguments& arguments = call.arguments;
    const std::size_t used =
        prepares ? 3 : 1;  // the handle, and of what is prepared the declarations and text
    require(call, used);
    CallPlan plan;
    if (prepares) {
        forget(arguments[0]);  // what a driver prepares another text in place of
        plan.handle = add(arguments);
    }
    const ProcedureCall::Argument& handle = prepares ? *plan.handle : arguments[0];
    const bool describes =
        isPrepare && arguments.size() > used && (numberOf(arguments[used]) & kReturnMetadata) != 0;
    if (name == "sp_unprepare") forget(handle);
    if (name == "sp_unprepare" || (isPrepare && !describes)) return plan;
    plan.run = {std::string(kExecuteSql), find(handle), describes};
    const auto values = arguments.begin() + static_cast<std::ptrdiff_t>(used);
    if (!describes)
        plan.run->arguments.insert(plan.run->arguments.end(), std::move_iterator(values),
                                   std::move_iterator(arguments.end()));
    return plan;
}

ProcedureCall::Argument PreparedStatements::add(Arguments& arguments) {
    if (m_statements.size() >= kMostStatements)
        throw SqlError(701, "There are too many prepared statements in this session.", 17);
    for (const std::size_t i : {1U, 2U}) arguments[i].name.clear();
    m_statements[++m_lastHandle] = {std::move(arguments[2]), std::move(arguments[1])};
    return {std::move(arguments[0].name), tsql::simpleType(tsql::TypeId::Int), m_lastHandle, true};
}

const Arguments& PreparedStatements::find(const ProcedureCall::Argument& handle) const {
    const auto found = m_statements.find(numberOf(handle));
    if (found != m_statements.end()) return found->second;
    throw SqlError(8179,
                   "Could not find prepared statement with handle " + std::to_string(numberOf(handle)) + ".");
}

void PreparedStatements::forget(const ProcedureCall::Argument& handle) {
    m_statements.erase(numberOf(handle));
}

}  // namespace tds

#include "Rpc.h"

#include <iterator>

#include "WireType.h"
#include "messages/Messages.h"
#include "types/Text.h"

namespace tds {
namespace {

using tsql::ProcedureCall;
using tsql::SqlError;
using Arguments = std::vector<ProcedureCall::Argument>;

constexpr std::uint16_t kCallByNumber = 0xFFFF;
constexpr std::uint8_t kNextCallSince72 = 0xFF;
constexpr std::uint8_t kNextCallBefore72 = 0x80;
constexpr std::uint8_t kFlagByReference = 0x01, kFlagDefault = 0x02;
constexpr std::size_t kMostStatements = 10'000;

constexpr std::string_view kExecuteSql = "sp_executesql";
// By their numbers, from 1; those for cursors are not there, which is told by their names.
constexpr std::string_view kProcedures[] = {
    "sp_cursor",          "sp_cursoropen",  "sp_cursorprepare", "sp_cursorexecute", "sp_cursorprepexec",
    "sp_cursorunprepare", "sp_cursorfetch", "sp_cursoroption",  "sp_cursorclose",   kExecuteSql,
    "sp_prepare",         "sp_execute",     "sp_prepexec",      "sp_prepexecrpc",   "sp_unprepare"};

// Bit of sp_prepare's option: tell the columns.
constexpr std::int64_t kReturnMetadata = 1;

std::string procedureName(std::uint16_t number) {
    if (number >= 1 && number <= std::size(kProcedures)) return std::string(kProcedures[number - 1]);
    throw ProtocolError("there is no procedure of number " + std::to_string(number));
}

// A flag where a parameter might begin: a name is at most 128 characters long.
bool isNextCall(std::uint8_t first) {
    return first == kNextCallSince72 || first == kNextCallBefore72;
}

ProcedureCall::Argument parseParameter(ByteReader& in, std::size_t nameLength, std::size_t position) {
    ProcedureCall::Argument parameter;
    parameter.name = utf8FromUtf16(in.bytes(2 * nameLength));
    const std::uint8_t flags = in.u8();
    parameter.isDefault = (flags & kFlagDefault) != 0;
    parameter.output = (flags & kFlagByReference) != 0;
    const WireType type = readTypeInfo(in);
    parameter.type = type.type;
    try {
        parameter.value = readValue(in, type);
    } catch (const ValueError&) {
        throw tsql::sqlError(tsql::message::kBadRpcParameter,
                             {std::to_string(position), parameter.name, tsql::displayName(parameter.type)});
    }
    return parameter;
}

ProcedureCall parseCall(ByteReader& in) {
    ProcedureCall call;
    const std::size_t nameLength = in.u16();
    call.procedure =
        nameLength == kCallByNumber ? procedureName(in.u16()) : utf8FromUtf16(in.bytes(2 * nameLength));
    in.skip(2);  // options: recompile and the like
    while (!in.atEnd()) {
        const std::uint8_t first = in.u8();
        if (isNextCall(first)) break;
        call.arguments.push_back(parseParameter(in, first, call.arguments.size() + 1));
    }
    return call;
}

void require(const ProcedureCall& call, std::size_t count) {
    if (call.arguments.size() < count)
        throw SqlError(tsql::message::kMissingParameter,
                       "Procedure or function '" + call.procedure + "' expects parameter number " +
                           std::to_string(call.arguments.size() + 1) + ", which was not supplied.");
}

std::int64_t numberOf(const ProcedureCall::Argument& argument) {
    const auto* number = std::get_if<std::int64_t>(&argument.value);
    return number ? *number : 0;
}

}  // namespace

std::vector<ProcedureCall> parseRpc(ByteView body) {
    std::vector<ProcedureCall> calls;
    ByteReader in(body);
    do calls.push_back(parseCall(in));
    while (!in.atEnd());
    return calls;
}

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
        throw SqlError(tsql::message::kInsufficientMemory,
                       "There are too many prepared statements in this session.", 17);
    for (const std::size_t i : {1U, 2U}) arguments[i].name.clear();
    m_statements[++m_lastHandle] = {std::move(arguments[2]), std::move(arguments[1])};
    return {std::move(arguments[0].name), tsql::simpleType(tsql::TypeId::Int), m_lastHandle, true};
}

const Arguments& PreparedStatements::find(const ProcedureCall::Argument& handle) const {
    const auto found = m_statements.find(numberOf(handle));
    if (found != m_statements.end()) return found->second;
    throw SqlError(tsql::message::kPreparedStatementNotFound,
                   "Could not find prepared statement with handle " + std::to_string(numberOf(handle)) + ".");
}

void PreparedStatements::forget(const ProcedureCall::Argument& handle) {
    m_statements.erase(numberOf(handle));
}

}  // namespace tds

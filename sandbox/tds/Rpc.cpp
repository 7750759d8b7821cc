#include "Rpc.h"

#include <iterator>

#include "Text.h"
#include "WireType.h"

namespace tds {
namespace {

using tsql::ProcedureCall;
using tsql::SqlError;
using Arguments = std::vector<ProcedureCall::Argument>;

constexpr std::uint16_t kCallByNumber = 0xFFFF;
constexpr std::uint8_t kNextCallSince72 = 0xFF;
constexpr std::uint8_t kNextCallBefore72 = 0x80;
constexpr std::uint8_t kFlagByReference = 0x01;
constexpr std::size_t kMostStatements = 10'000;

constexpr std::string_view kExecuteSql = "sp_executesql";
constexpr std::string_view kProcedures[] = {"",
                                            "sp_cursor",
                                            "sp_cursoropen",
                                            "sp_cursorprepare",
                                            "sp_cursorexecute",
                                            "sp_cursorprepexec",
                                            "sp_cursorunprepare",
                                            "sp_cursorfetch",
                                            "sp_cursoroption",
                                            "sp_cursorclose",
                                            kExecuteSql,
                                            "sp_prepare",
                                            "sp_execute",
                                            "sp_prepexec",
                                            "sp_prepexecrpc",
                                            "sp_unprepare"};

// Bit of sp_prepare's option: tell the columns.
constexpr std::int64_t kReturnMetadata = 1;

std::string procedureName(std::uint16_t number) {
    if (number < std::size(kProcedures)) return std::string(kProcedures[number]);
    throw SqlError(2812, "Could not find stored procedure '" + std::to_string(number) + "'.", 16, 62);
}

// A flag where a parameter might begin: a name is at most 128 characters long.
bool isNextCall(std::uint8_t first) {
    return first == kNextCallSince72 || first == kNextCallBefore72;
}

ProcedureCall::Argument parseParameter(ByteReader& in, std::size_t nameLength) {
    ProcedureCall::Argument parameter;
    parameter.name = utf8FromUtf16(in.bytes(2 * nameLength));
    parameter.output = (in.u8() & kFlagByReference) != 0;
    const WireType type = readTypeInfo(in);
    parameter.type = type.type;
    parameter.value = readValue(in, type);
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
        call.arguments.push_back(parseParameter(in, first));
    }
    return call;
}

void require(const Arguments& arguments, std::size_t count, const char* procedure) {
    if (arguments.size() < count)
        throw SqlError(201, std::string("Procedure or function '") + procedure +
                                "' expects parameter number " + std::to_string(arguments.size() + 1) +
                                ", which was not supplied.");
}

std::int64_t numberOf(const ProcedureCall::Argument& argument) {
    const auto* number = std::get_if<std::int64_t>(&argument.value);
    return number ? *number : 0;
}

ProcedureCall executeSql(ProcedureCall::Argument text, ProcedureCall::Argument declarations) {
    text.name.clear();
    declarations.name.clear();
    return {std::string(kExecuteSql), {std::move(text), std::move(declarations)}};
}

void appendFrom(std::size_t first, Arguments& from, ProcedureCall& call) {
    call.arguments.insert(call.arguments.end(),
                          std::move_iterator(from.begin() + static_cast<std::ptrdiff_t>(first)),
                          std::move_iterator(from.end()));
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
    if (name == "sp_prepare") return prepare(std::move(call.arguments));
    if (name == "sp_prepexec") return prepareAndRun(std::move(call.arguments));
    if (name == "sp_execute") return run(std::move(call.arguments));
    if (name == "sp_unprepare") return unprepare(std::move(call.arguments));
    return {std::move(call), {}};
}

// handle OUTPUT, declarations, text [, options]
CallPlan PreparedStatements::prepare(Arguments arguments) {
    require(arguments, 3, "sp_prepare");
    CallPlan plan;
    if (arguments.size() > 3 && (numberOf(arguments[3]) & kReturnMetadata) != 0) {
        plan.run = executeSql(arguments[2], arguments[1]);
        plan.run->describeOnly = true;
    }
    plan.handle = add(arguments);
    return plan;
}

// handle OUTPUT, declarations, text, values...
CallPlan PreparedStatements::prepareAndRun(Arguments arguments) {
    require(arguments, 3, "sp_prepexec");
    CallPlan plan{executeSql(arguments[2], arguments[1]), add(arguments)};
    appendFrom(3, arguments, *plan.run);
    return plan;
}

CallPlan PreparedStatements::run(Arguments arguments) {
    require(arguments, 1, "sp_execute");
    const auto found = m_statements.find(numberOf(arguments[0]));
    if (found == m_statements.end())
        throw SqlError(8179, "Could not find prepared statement with handle " +
                                 std::to_string(numberOf(arguments[0])) + ".");
    CallPlan plan{executeSql(found->second.text, found->second.declarations), {}};
    appendFrom(1, arguments, *plan.run);
    return plan;
}

CallPlan PreparedStatements::unprepare(Arguments arguments) {
    require(arguments, 1, "sp_unprepare");
    forget(arguments[0]);
    return {};
}

ProcedureCall::Argument PreparedStatements::add(Arguments& arguments) {
    if (m_statements.size() >= kMostStatements)
        throw SqlError(701, "There are too many prepared statements in this session.", 17);
    m_statements[++m_lastHandle] = {std::move(arguments[2]), std::move(arguments[1])};
    return {std::move(arguments[0].name), tsql::simpleType(tsql::TypeId::Int), m_lastHandle, true};
}

void PreparedStatements::forget(const ProcedureCall::Argument& handle) {
    m_statements.erase(numberOf(handle));
}

}  // namespace tds

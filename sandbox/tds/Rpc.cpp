#include "Rpc.h"

#include <iterator>

#include "WireValue.h"
#include "messages/Messages.h"

namespace tds {
namespace {

using tsql::ProcedureCall;

constexpr std::uint16_t kNameIsNumber = 0xFFFF;  // instead of the length of a procedure name
// BatchFlag, the separator of two calls.
constexpr std::uint8_t kNextCallSince72 = 0xFF;
constexpr std::uint8_t kNextCallBefore72 = 0x80;
constexpr std::uint8_t kFlagByReference = 0x01, kFlagDefault = 0x02;

// Procedures that can be called by number, from 1. The engine does not support the cursor procedures and
// reports them by name.
constexpr std::string_view kProcedures[] = {
    "sp_cursor",          "sp_cursoropen",  "sp_cursorprepare", "sp_cursorexecute", "sp_cursorprepexec",
    "sp_cursorunprepare", "sp_cursorfetch", "sp_cursoroption",  "sp_cursorclose",   "sp_executesql",
    "sp_prepare",         "sp_execute",     "sp_prepexec",      "sp_prepexecrpc",   "sp_unprepare"};

std::string procedureName(std::uint16_t number) {
    if (number >= 1 && number <= std::size(kProcedures)) return std::string(kProcedures[number - 1]);
    throw ProtocolError("unknown procedure number " + std::to_string(number));
}

// position: of the parameter in the call, from 1.
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
        nameLength == kNameIsNumber ? procedureName(in.u16()) : utf8FromUtf16(in.bytes(2 * nameLength));
    in.skip(2);  // option flags
    while (!in.atEnd()) {
        const std::uint8_t first = in.u8();
        // Not a length, since the name of a parameter has at most 128 characters.
        if (first == kNextCallSince72 || first == kNextCallBefore72) break;
        call.arguments.push_back(parseParameter(in, first, call.arguments.size() + 1));
    }
    return call;
}

}  // namespace

std::vector<ProcedureCall> parseRpc(ByteView body) {
    std::vector<ProcedureCall> calls;
    ByteReader in(body);
    do calls.push_back(parseCall(in));
    while (!in.atEnd());
    return calls;
}

}  // namespace tds

#include "Requests.h"

#include <boost/algorithm/string/replace.hpp>

#include "WireType.h"

namespace tds {
namespace {

using tsql::ProcedureCall;

// ---- rows of bulk loads and tables

// Adds the type of a column and returns its flags.
std::uint16_t readColumn(ByteReader& in, Version version, std::vector<WireType>& types) {
    in.skip(version >= Version::V72 ? 4 : 2);  // user type
    const std::uint16_t flags = in.u16();
    const WireType& type = types.emplace_back(readTypeInfo(in));
    if (type.carriesTableName()) in.skip(2 * std::size_t{in.u16()});
    in.skip(2 * std::size_t{in.u8()});  // the name, which INSERT BULK or the table type has given
    return flags;
}

// text, ntext and image have a pointer, of length 0 for NULL.
tsql::Value readCell(ByteReader& in, const WireType& type) {
    if (!type.carriesTableName()) return readValue(in, type);
    const std::size_t pointer = in.u8();
    if (pointer == 0) return tsql::Null{};
    in.skip(pointer + kTextTimestampSize);
    return readValue(in, type);
}

void sendRow(ByteReader& in, const std::vector<WireType>& types, const tsql::RowHandler& handler) {
    std::vector<tsql::Value> values;
    std::vector<tsql::CellView> cells;
    std::vector<tsql::Column> columns;
    try {
        for (const WireType& type : types) values.push_back(readCell(in, type));
    } catch (const OddUnicode&) {
        throw tsql::sqlError(tsql::kOddBulkUnicode, {std::to_string(values.size() + 1)});
    }
    for (const auto& value : values) cells.push_back(tsql::viewOf(value));
    for (const WireType& each : types) columns.push_back({{}, each.type});
    handler(columns, cells);
}

// ---- tables as parameters

constexpr std::uint8_t kTableType = 0xF3, kTableRow = 0x01;
constexpr std::size_t kNullTable = 0xFFFF;  // instead of the number of columns
constexpr std::uint16_t kFlagDefaultColumn = 0x0200;

std::string quoted(const std::string& name) {
    return "[" + boost::replace_all_copy(name, "]", "]]") + "]";
}

void sendTableRows(ByteReader& in, const std::vector<WireType>& types, const tsql::RowHandler& handler) {
    while (const std::uint8_t token = in.u8()) {
        if (token != kTableRow || types.empty()) throw ProtocolError("unexpected token in a table");
        sendRow(in, types, handler);
    }
}

// Reads a table, [MS-TDS] 2.2.5.5.5. Its rows are read again when they are inserted.
ProcedureCall::Argument readTable(ByteReader& in, std::string parameter) {
    ProcedureCall::Argument table;
    table.name = std::move(parameter);
    in.skip(sizeof kTableType);
    in.skip(2 * std::size_t{in.u8()});  // database: always the current one
    const std::string schema = utf8FromUtf16(in.bytes(2 * std::size_t{in.u8()}));
    const std::string name = quoted(utf8FromUtf16(in.bytes(2 * std::size_t{in.u8()})));
    table.tableType = schema.empty() ? name : quoted(schema) + "." + name;
    std::vector<WireType> types;
    const std::size_t count = in.u16();
    table.isDefault = count == kNullTable;
    for (std::size_t left = table.isDefault ? 0 : count; left > 0; --left) {
        table.columns.push_back((readColumn(in, Version::V74, types) & kFlagDefaultColumn) == 0);
        if (!table.columns.back()) types.pop_back();
    }
    if (in.u8() != 0) throw tsql::unsupported("an order of the rows or columns of a table-valued parameter");
    table.rows = [types, start = in](const tsql::RowHandler& handler) {
        ByteReader rows = start;
        sendTableRows(rows, types, handler);
    };
    sendTableRows(in, types, [](auto, auto) {});
    return table;
}

// ---- procedure calls

constexpr std::uint16_t kNameIsNumber = 0xFFFF;  // instead of the length of a procedure name
constexpr std::uint8_t kNextCallSince72 = 0xFF, kNextCallBefore72 = 0x80;  // separators of two calls
constexpr std::uint8_t kFlagByReference = 0x01, kFlagDefault = 0x02;

// Procedures that can be called by number, from 1.
constexpr std::string_view kProcedures[] = {
    "sp_cursor",          "sp_cursoropen",  "sp_cursorprepare", "sp_cursorexecute", "sp_cursorprepexec",
    "sp_cursorunprepare", "sp_cursorfetch", "sp_cursoroption",  "sp_cursorclose",   "sp_executesql",
    "sp_prepare",         "sp_execute",     "sp_prepexec",      "sp_prepexecrpc",   "sp_unprepare"};

// position: of the parameter in the call, from 1.
ProcedureCall::Argument parseParameter(ByteReader& in, std::size_t nameLength, std::size_t position) {
    ProcedureCall::Argument parameter;
    parameter.name = utf8FromUtf16(in.bytes(2 * nameLength));
    const std::uint8_t flags = in.u8();
    parameter.isDefault = (flags & kFlagDefault) != 0;
    parameter.output = (flags & kFlagByReference) != 0;
    if (ByteReader(in).u8() == kTableType) return readTable(in, std::move(parameter.name));
    const WireType type = readTypeInfo(in);
    parameter.type = type.type;
    try {
        parameter.value = readValue(in, type);
    } catch (const ValueError&) {
        throw tsql::sqlError(tsql::kBadRpcParameter,
                             {std::to_string(position), parameter.name, tsql::displayName(parameter.type)});
    }
    return parameter;
}

ProcedureCall parseCall(ByteReader& in) {
    ProcedureCall call;
    const std::size_t nameLength = in.u16(), number = nameLength == kNameIsNumber ? in.u16() : 0;
    if (number > std::size(kProcedures))
        throw ProtocolError("unknown procedure number " + std::to_string(number));
    call.procedure = number > 0 ? kProcedures[number - 1] : utf8FromUtf16(in.bytes(2 * nameLength));
    in.skip(2);  // option flags
    while (!in.atEnd()) {
        const std::uint8_t first = in.u8();
        // Not a length, since the name of a parameter has at most 128 characters.
        if (first == kNextCallSince72 || first == kNextCallBefore72) break;
        call.arguments.push_back(parseParameter(in, first, call.arguments.size() + 1));
    }
    return call;
}

// ---- transactions

enum RequestType : std::uint16_t { kBegin = 5, kCommit = 7, kRollback = 8, kSave = 9 };
constexpr std::uint8_t kFlagBeginNext = 1;  // of a commit or rollback: begin the next transaction

// " [name]" of a transaction or savepoint; empty when it has no name.
std::string readName(ByteReader& in) {
    const std::string name = utf8FromUtf16(in.bytes(in.u8()));
    return name.empty() ? name : " " + quoted(name);
}

std::string beginBatch(ByteReader& in) {
    in.skip(1);  // isolation level: the engine has only one
    return "BEGIN TRANSACTION" + readName(in);
}

}  // namespace

std::vector<ProcedureCall> parseRpc(ByteView body) {
    std::vector<ProcedureCall> calls;
    ByteReader in(body);
    do calls.push_back(parseCall(in));
    while (!in.atEnd());
    return calls;
}

void sendBulkRows(ByteView data, Version version, const tsql::RowHandler& handler) {
    ByteReader in(data);
    std::vector<WireType> types;
    while (!in.atEnd()) {
        const auto token = static_cast<Token>(in.u8());
        if (token == Token::ColMetadata) {
            types.clear();
            for (std::size_t left = in.u16(); left > 0; --left) readColumn(in, version, types);
        } else if (token == Token::Row)
            sendRow(in, types, handler);
        else if (token == Token::Done)  // FreeTDS sends none
            return;
        else
            throw ProtocolError("unexpected token in a bulk load");
    }
}

std::string transactionBatch(ByteView body) {
    ByteReader in(body);
    const std::uint16_t request = in.u16();
    if (request == kBegin) return beginBatch(in);
    if (request == kSave) return "SAVE TRANSACTION" + readName(in);
    if (request != kCommit && request != kRollback)
        throw tsql::unsupported("transaction manager request " + std::to_string(request));
    const std::string batch =
        (request == kCommit ? "COMMIT TRANSACTION" : "ROLLBACK TRANSACTION") + readName(in);
    return (in.u8() & kFlagBeginNext) != 0 ? batch + " " + beginBatch(in) : batch;
}

}  // namespace tds

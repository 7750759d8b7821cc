#include "BulkLoad.h"

#include "WireValue.h"
#include "messages/Messages.h"

namespace tds {
namespace {

constexpr std::size_t kFlagsSize = 2, kTextTimestampSize = 8;

std::vector<WireType> sendColumns(ByteReader& in, Version version, tsql::ResultSink& sink) {
    std::vector<WireType> types;
    std::vector<tsql::Column> columns;
    for (std::size_t left = in.u16(); left > 0; --left) {
        in.skip((version >= Version::V72 ? 4 : 2) + kFlagsSize);  // behind the user type
        const WireType& type = types.emplace_back(readTypeInfo(in));
        if (carriesTableName(type)) in.skip(2 * std::size_t{in.u16()});
        in.skip(2 * std::size_t{in.u8()});  // the name, which INSERT BULK has given
        columns.push_back({{}, type.type});
    }
    sink.columns(columns);
    return types;
}

// text, ntext and image have a pointer, of length 0 for NULL.
tsql::Value readCell(ByteReader& in, const WireType& type) {
    if (!carriesTableName(type)) return readValue(in, type);
    const std::size_t pointer = in.u8();
    if (pointer == 0) return tsql::Null{};
    in.skip(pointer + kTextTimestampSize);
    return readValue(in, type);
}

void sendRow(ByteReader& in, const std::vector<WireType>& types, tsql::ResultSink& sink) {
    std::vector<tsql::Value> values;
    std::vector<tsql::CellView> cells;
    try {
        for (const WireType& type : types) values.push_back(readCell(in, type));
    } catch (const OddUnicode&) {
        throw tsql::sqlError(tsql::message::kOddBulkUnicode, {std::to_string(values.size() + 1)});
    } catch (const ValueError& problem) {
        throw tsql::SqlError(tsql::message::kConversionError, problem.what());
    }
    for (const auto& value : values) cells.push_back(tsql::viewOf(value));
    sink.row(cells);
}

}  // namespace

void sendBulkRows(ByteView data, Version version, tsql::ResultSink& sink) {
    ByteReader in(data);
    std::vector<WireType> types;
    while (!in.atEnd()) {
        const auto token = static_cast<Token>(in.u8());
        if (token == Token::ColMetadata)
            types = sendColumns(in, version, sink);
        else if (token == Token::Row)
            sendRow(in, types, sink);
        else if (token == Token::Done)  // FreeTDS sends none
            return;
        else
            throw ProtocolError("unexpected token in a bulk load");
    }
}

}  // namespace tds

#include "TokenWriter.h"

#include <algorithm>

#include "Login.h"

namespace tds {
namespace {

constexpr std::string_view kProductName = "Microsoft SQL Server";  // clients look for it
constexpr std::uint8_t kInterfaceTransactSql = 1;

constexpr std::size_t kMostMessageUnits = 8000;

constexpr unsigned kColumnNullable = 0x01;
constexpr unsigned kColumnIdentity = 0x10;
constexpr std::uint8_t kStatusOutputParameter = 0x01;

constexpr unsigned kCommandSelect = 0xC1;
constexpr unsigned kCommandUpdate = 0xC5;

}  // namespace

void TokenWriter::loginAck() {
    token(Token::LoginAck);
    const std::size_t place = m_out.openLength();
    m_out.u8(kInterfaceTransactSql);
    m_out.bigEndian(static_cast<std::uint32_t>(m_version), 4);
    m_out.shortText(kProductName);
    m_out.bigEndian(kServerVersion, 4);
    m_out.closeLength(place);
}

void TokenWriter::message(const tsql::Message& message) {
    token(message.severity >= kLeastErrorSeverity ? Token::Error : Token::Info);
    const std::size_t place = m_out.openLength();
    m_out.u32(static_cast<std::uint32_t>(message.number));
    m_out.u8(static_cast<std::uint8_t>(message.state));
    m_out.u8(static_cast<std::uint8_t>(message.severity));
    m_out.longText(message.text, kMostMessageUnits);
    m_out.shortText(m_serverName);
    m_out.shortText(message.procedure);
    m_out.number(static_cast<std::uint32_t>(message.line), m_version >= Version::V72 ? 4 : 2);
    m_out.closeLength(place);
}

void TokenWriter::textChange(EnvChange what, std::string_view to, std::string_view from) {
    change(what, utf16FromUtf8(to), utf16FromUtf8(from), 2);
}

// The lengths count units.
void TokenWriter::change(EnvChange what, ByteView to, ByteView from, std::size_t unitSize) {
    token(Token::EnvChange);
    const std::size_t place = m_out.openLength();
    m_out.u8(static_cast<std::uint8_t>(what));
    for (const ByteView value : {to, from}) {
        m_out.u8(value.size() / unitSize);
        m_out.bytes(value);
    }
    m_out.closeLength(place);
}

void TokenWriter::binaryChange(EnvChange what, ByteView to, ByteView from) {
    change(what, to, from, 1);
}

void TokenWriter::transactionChange(tsql::TransactionEvent event) {
    const bool begins = event == tsql::TransactionEvent::Began;
    if (begins) ++m_transaction;
    ByteWriter descriptor;
    descriptor.u64(m_transaction);
    const ByteView it = descriptor.data(), none;
    constexpr EnvChange kChanges[] = {EnvChange::BeginTransaction, EnvChange::CommitTransaction,
                                      EnvChange::RollbackTransaction};
    binaryChange(kChanges[static_cast<std::size_t>(event)], begins ? it : none, begins ? none : it);
}

void TokenWriter::userTypeAndFlags(unsigned flags) {
    m_out.number(0, m_version >= Version::V72 ? 4 : 2);
    m_out.u16(flags);
}

void TokenWriter::columns(std::span<const tsql::Column> columns) {
    m_columnTypes.clear();
    token(Token::ColMetadata);
    m_out.u16(columns.size());
    for (const tsql::Column& column : columns) {
        const WireType& type = m_columnTypes.emplace_back(wireType(column.type, m_version));
        userTypeAndFlags((column.nullable ? kColumnNullable : 0U) | (column.identity ? kColumnIdentity : 0U));
        writeTypeInfo(m_out, type);
        // An empty table name: no parts since 7.2, before that no characters.
        if (carriesTableName(type)) m_out.number(0, m_version >= Version::V72 ? 1 : 2);
        m_out.shortText(column.name);
    }
}

void TokenWriter::row(std::span<const tsql::CellView> cells) {
    if (cells.size() != m_columnTypes.size())
        throw ValueError("a row does not have as many values as its result has columns");
    const std::size_t start = m_out.size();
    try {
        writeCells(cells);
    } catch (const ValueError&) {
        m_out.data().resize(start);
        throw;
    }
}

// A row with NULLs goes out in the form that names them in a bit map, where the client knows it.
void TokenWriter::writeCells(std::span<const tsql::CellView> cells) {
    const auto isNull = [](const tsql::CellView& cell) { return tsql::isNull(cell); };
    const bool bitMap = m_version >= Version::V73B && std::any_of(cells.begin(), cells.end(), isNull);
    token(bitMap ? Token::NbcRow : Token::Row);
    if (bitMap) {
        const std::size_t mapStart = m_out.size();
        m_out.bytes(Bytes((cells.size() + 7) / 8, '\0'));
        for (std::size_t i = 0; i < cells.size(); ++i)
            if (isNull(cells[i])) m_out.data()[mapStart + i / 8] |= static_cast<char>(1U << i % 8);
    }
    for (std::size_t i = 0; i < cells.size(); ++i)
        if (!bitMap || !isNull(cells[i])) writeValue(m_out, m_columnTypes[i], cells[i]);
}

void TokenWriter::returnStatus(std::int32_t status) {
    token(Token::ReturnStatus);
    m_out.u32(static_cast<std::uint32_t>(status));
}

void TokenWriter::returnValue(std::string_view name, const tsql::SqlType& type, const tsql::CellView& value) {
    const WireType sent = wireType(type, m_version);
    token(Token::ReturnValue);
    m_out.u16(0);
    m_out.shortText(name);
    m_out.u8(kStatusOutputParameter);
    userTypeAndFlags(kColumnNullable);
    writeTypeInfo(m_out, sent);
    writeValue(m_out, sent, value);
}

void TokenWriter::done(Token kind, unsigned status, std::int64_t rowCount, bool isSelect) {
    token(kind);
    const bool counts = rowCount >= 0;
    m_out.u16(status | (counts ? kDoneCount : 0U));
    m_out.u16(isSelect ? kCommandSelect : counts ? kCommandUpdate : 0U);
    m_out.number(counts ? static_cast<std::uint64_t>(rowCount) : 0, m_version >= Version::V72 ? 8 : 4);
}

}  // namespace tds

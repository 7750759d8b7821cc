#include "Response.h"

#include <algorithm>

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

// Looking at the socket costs more than a row, so it is not done for every one.
constexpr std::chrono::milliseconds kLookInterval{2};

}  // namespace

// ---- Tokens -------------------------------------------------------------------------------------------

// What is held back goes before, as more follows.
void Response::token(Token token) {
    if (m_held) writeDone(kDoneMore);
    m_out.u8(static_cast<std::uint8_t>(token));
}

void Response::loginAck() {
    token(Token::LoginAck);
    const std::size_t place = m_out.openLength();
    m_out.u8(kInterfaceTransactSql);
    m_out.bigEndian(static_cast<std::uint32_t>(m_version), 4);
    m_out.shortText(kProductName);
    m_out.bigEndian(kServerVersion, 4);
    m_out.closeLength(place);
}

void Response::message(const tsql::Message& message) {
    const bool isError = message.severity >= kLeastErrorSeverity;
    token(isError ? Token::Error : Token::Info);
    m_failed = m_failed || isError;
    m_anyError = m_anyError || isError;
    const std::size_t place = m_out.openLength();
    m_out.u32(static_cast<std::uint32_t>(message.number));
    m_out.u8(static_cast<std::uint8_t>(message.state));
    m_out.u8(static_cast<std::uint8_t>(message.severity));
    m_out.longText(message.text, kMostMessageUnits);
    m_out.shortText(m_serverName);
    m_out.shortText(message.procedure);
    m_out.number(static_cast<std::uint32_t>(message.line), m_version >= Version::V72 ? 4 : 2);
    m_out.closeLength(place);
    m_channel.sendSome(m_out.data());
}

void Response::textChange(EnvChange what, std::string_view to, std::string_view from) {
    change(what, utf16FromUtf8(to), utf16FromUtf8(from), 2);
}

// The lengths count units.
void Response::change(EnvChange what, ByteView to, ByteView from, std::size_t unitSize) {
    token(Token::EnvChange);
    const std::size_t place = m_out.openLength();
    m_out.u8(static_cast<std::uint8_t>(what));
    for (const ByteView value : {to, from}) {
        m_out.u8(value.size() / unitSize);
        m_out.bytes(value);
    }
    m_out.closeLength(place);
}

void Response::binaryChange(EnvChange what, ByteView to, ByteView from) {
    change(what, to, from, 1);
}

void Response::databaseChanged(std::string_view from, std::string_view to) {
    textChange(EnvChange::Database, to, from);
}

void Response::transactionChanged(tsql::TransactionEvent event) {
    const bool begins = event == tsql::TransactionEvent::Began;
    if (begins) ++m_transaction;
    ByteWriter descriptor;
    descriptor.u64(m_transaction);
    const ByteView it = descriptor.data(), none;
    constexpr EnvChange kChanges[] = {EnvChange::BeginTransaction, EnvChange::CommitTransaction,
                                      EnvChange::RollbackTransaction};
    binaryChange(kChanges[static_cast<std::size_t>(event)], begins ? it : none, begins ? none : it);
}

void Response::userTypeAndFlags(unsigned flags) {
    m_out.number(0, m_version >= Version::V72 ? 4 : 2);
    m_out.u16(flags);
}

void Response::columns(std::span<const tsql::Column> columns) {
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

void Response::row(std::span<const tsql::CellView> cells) {
    if (cells.size() != m_columnTypes.size())
        throw ValueError("a row does not have as many values as its result has columns");
    if (m_held) writeDone(kDoneMore);
    const std::size_t start = m_out.size();
    try {
        writeCells(cells);
    } catch (const ValueError&) {
        m_out.data().resize(start);
        throw;
    }
    m_channel.sendSome(m_out.data());
}

// A row with NULLs goes out in the form that names them in a bit map, where the client knows it.
void Response::writeCells(std::span<const tsql::CellView> cells) {
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

void Response::returnStatus(std::int32_t status) {
    token(Token::ReturnStatus);
    m_out.u32(static_cast<std::uint32_t>(status));
}

void Response::returnValue(std::string_view name, const tsql::SqlType& type, const tsql::CellView& value) {
    const WireType sent = wireType(type, m_version);
    token(Token::ReturnValue);
    m_out.u16(0);
    m_out.shortText(name);
    m_out.u8(kStatusOutputParameter);
    userTypeAndFlags(kColumnNullable);
    writeTypeInfo(m_out, sent);
    writeValue(m_out, sent, value);
}

// ---- The response's course ----------------------------------------------------------------------------

void Response::statementDone(std::int64_t rowCount, bool isSelect) {
    hold({m_inCall ? Token::DoneInProc : Token::Done, failure(), rowCount, isSelect});
}

void Response::hold(Done done) {
    if (m_held) writeDone(kDoneMore);
    m_held = done;
    m_failed = false;
}

void Response::writeDone(unsigned more) {
    const auto [kind, status, rowCount, isSelect] = *m_held;
    m_held.reset();
    const bool counts = rowCount >= 0;
    token(kind);
    m_out.u16(status | more | (counts ? kDoneCount : 0U));
    m_out.u16(isSelect ? kCommandSelect : counts ? kCommandUpdate : 0U);
    m_out.number(counts ? static_cast<std::uint64_t>(rowCount) : 0, m_version >= Version::V72 ? 8 : 4);
}

void Response::flush() {
    if (m_held) writeDone(kDoneMore);
    m_channel.sendNow(m_out.data());
}

// Does not throw: the engine may ask from within SQLite, which no exception can cross.
bool Response::cancelled() {
    if (m_attention || m_clientGone) return true;
    const auto now = PacketChannel::Clock::now();
    if (now < m_nextLook) return false;
    m_nextLook = now + kLookInterval;
    try {
        m_attention = m_channel.attentionArrived();
    } catch (const std::exception&) {
        m_clientGone = true;  // or sends what is no packet; the next request's reading says which
    }
    return m_attention || m_clientGone;
}

void Response::beginCall() {
    m_inCall = true;
    m_anyError = false;
}

void Response::endCall() {
    hold({Token::DoneProc, failure()});
    m_inCall = false;
}

void Response::finish() {
    if (!m_held || m_failed) hold({Token::Done, failure()});
    writeDone(kDoneFinal);
    m_channel.sendLast(m_out.data());
    m_inCall = m_anyError = m_clientGone = false;
    if (m_attention) acknowledgeAttention();
}

void Response::refuse() {
    m_failed = true;
    finish();
}

void Response::acknowledgeAttention() {
    m_attention = false;
    hold({Token::Done, kDoneAttention});
    writeDone(kDoneFinal);
    m_channel.sendLast(m_out.data());
}

}  // namespace tds

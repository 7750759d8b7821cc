#include "Response.h"

namespace tds {
namespace {

constexpr std::string_view kProductName = "Microsoft SQL Server";  // drivers test for it
constexpr std::uint8_t kInterfaceTransactSql = 1;

constexpr int kMinErrorSeverity = 11;  // lower ones are sent as INFO
constexpr std::size_t kMaxMessageUnits = 8000;

constexpr unsigned kColumnNullable = 0x01, kColumnIdentity = 0x10;
constexpr std::uint8_t kStatusOutputParameter = 0x01;

// Commands of DONE tokens, in the order of tsql::StatementKind; the call of a procedure.
constexpr unsigned kCommands[] = {0, 0xC1, 0xC3, 0xC5, 0xC4, 0x117};
constexpr unsigned kCommandExecute = 0xE0;

// A look at the socket costs more than sending a row, hence not one for every row.
constexpr std::chrono::milliseconds kAttentionCheckInterval{2};

}  // namespace

// Writes the pending DONE first: now it is known that more follows.
void Response::beginToken(Token token) {
    if (m_pendingDone) writePendingDone(kDoneMore);
    m_out.u8(static_cast<std::uint8_t>(token));
}

void Response::loginAck() {
    beginToken(Token::LoginAck);
    const std::size_t place = m_out.openLength();
    m_out.u8(kInterfaceTransactSql);
    m_out.bigEndian(static_cast<std::uint32_t>(m_version), 4);
    m_out.varchar(kProductName);
    m_out.bigEndian(kServerVersion, 4);
    m_out.closeLength(place);
}

void Response::message(const tsql::Message& message) {
    const bool isError = message.severity >= kMinErrorSeverity;
    beginToken(isError ? Token::Error : Token::Info);
    m_statementFailed = m_statementFailed || isError;
    const std::size_t place = m_out.openLength();
    m_out.u32(static_cast<std::uint32_t>(message.number));
    m_out.u8(static_cast<std::uint8_t>(message.state));
    m_out.u8(static_cast<std::uint8_t>(message.severity));
    m_out.varchar(message.text, /*lengthWidth=*/2, kMaxMessageUnits);
    m_out.varchar(m_serverName);
    m_out.varchar(message.procedure);
    m_out.number(static_cast<std::uint32_t>(message.line), m_version >= Version::V72 ? 4 : 2);
    m_out.closeLength(place);
    m_channel.send(m_out.data(), PacketChannel::Extent::FullPackets);
}

void Response::sspi(ByteView token) {
    if (token.empty()) return;
    beginToken(Token::Sspi);
    m_out.u16(token.size());
    m_out.bytes(token);
}

void Response::textChange(EnvChange what, std::string_view to, std::string_view from) {
    binaryChange(what, utf16FromUtf8(to), utf16FromUtf8(from), /*unitSize=*/2);
}

void Response::binaryChange(EnvChange what, ByteView to, ByteView from, std::size_t unitSize) {
    beginToken(Token::EnvChange);
    const std::size_t place = m_out.openLength();
    m_out.u8(static_cast<std::uint8_t>(what));
    for (const ByteView value : {to, from}) {
        m_out.u8(value.size() / unitSize);
        m_out.bytes(value);
    }
    m_out.closeLength(place);
}

void Response::transactionChanged(tsql::TransactionEvent event) {
    const bool begins = event == tsql::TransactionEvent::Began;
    if (begins) ++m_transaction;
    ByteWriter descriptor;
    descriptor.u64(m_transaction);
    constexpr EnvChange kChanges[] = {EnvChange::BeginTransaction, EnvChange::CommitTransaction,
                                      EnvChange::RollbackTransaction};
    const EnvChange change = kChanges[static_cast<std::size_t>(event)];
    const ByteView current = descriptor.data(), none;
    binaryChange(change, begins ? current : none, begins ? none : current);
}

void Response::writeType(const WireType& type, unsigned flags) {
    m_out.number(0, m_version >= Version::V72 ? 4 : 2);  // user type
    m_out.u16(flags);
    writeTypeInfo(m_out, type);
}

void Response::columns(std::span<const tsql::Column> columns) {
    m_columnTypes.clear();
    beginToken(Token::ColMetadata);
    m_out.u16(columns.size());
    for (const tsql::Column& column : columns) {
        const WireType& type = m_columnTypes.emplace_back(wireType(column.type, m_version));
        writeType(type, (column.nullable ? kColumnNullable : 0U) | (column.identity ? kColumnIdentity : 0U));
        // An empty table name: a count of parts since 7.2, a count of characters before.
        if (type.carriesTableName()) m_out.number(0, m_version >= Version::V72 ? 1 : 2);
        m_out.varchar(column.name);
    }
}

void Response::row(std::span<const tsql::CellView> cells) {
    if (cells.size() != m_columnTypes.size())
        throw ValueError("the number of values in a row differs from the number of columns");
    beginToken(Token::Row);
    const std::size_t start = m_out.size() - sizeof(Token);
    try {
        for (std::size_t i = 0; i < cells.size(); ++i) writeValue(m_out, m_columnTypes[i], cells[i]);
    } catch (const ValueError&) {
        m_out.data().resize(start);
        throw;
    }
    m_channel.send(m_out.data(), PacketChannel::Extent::FullPackets);
}

void Response::returnStatus(std::int32_t status) {
    beginToken(Token::ReturnStatus);
    m_out.u32(static_cast<std::uint32_t>(status));
}

void Response::returnValue(std::ptrdiff_t ordinal, std::string_view name, const tsql::SqlType& type,
                           const tsql::CellView& value) {
    const WireType sent = wireType(type, m_version);
    beginToken(Token::ReturnValue);
    m_out.u16(static_cast<std::uint16_t>(ordinal));
    m_out.varchar(name);
    m_out.u8(kStatusOutputParameter);
    writeType(sent, kColumnNullable);
    writeValue(m_out, sent, value);
}

void Response::statementDone(std::int64_t rowCount, tsql::StatementKind kind) {
    const Token token = m_inCall ? Token::DoneInProc : Token::Done;
    setPendingDone({token, rowCount, kCommands[static_cast<std::size_t>(kind)]});
}

void Response::setPendingDone(Done done) {
    if (m_pendingDone) writePendingDone(kDoneMore);
    if (std::exchange(m_statementFailed, false)) done.status |= kDoneError;
    m_pendingDone = done;
}

void Response::writePendingDone(unsigned moreFlag) {
    const auto [kind, rowCount, command, status] = *m_pendingDone;
    m_pendingDone.reset();
    const bool hasCount = rowCount >= 0;
    beginToken(kind);
    m_out.u16(status | moreFlag | (hasCount ? kDoneCount : 0U));
    m_out.u16(command);
    m_out.number(hasCount ? static_cast<std::uint64_t>(rowCount) : 0, m_version >= Version::V72 ? 8 : 4);
}

void Response::flush() {
    if (m_pendingDone) writePendingDone(kDoneMore);
    m_channel.send(m_out.data(), PacketChannel::Extent::All);
}

// Must not throw: the engine may call it from inside SQLite, which exceptions cannot cross.
bool Response::cancelled() {
    if (m_attention || m_clientGone) return true;
    const auto now = PacketChannel::Clock::now();
    if (now < m_nextAttentionCheck) return false;
    m_nextAttentionCheck = now + kAttentionCheckInterval;
    try {
        m_attention = m_channel.attentionArrived();
    } catch (const std::exception&) {
        m_clientGone = true;  // or broke the protocol; the next readRequest() reports which
    }
    return m_attention || m_clientGone;
}

void Response::endCall() {
    setPendingDone({.kind = Token::DoneProc, .command = kCommandExecute});
    m_inCall = m_callOfBatch = false;
}

void Response::procedureBegan() {
    if (m_inCall) return;  // the call of the request itself
    beginCall();
    m_callOfBatch = true;
}

void Response::procedureEnded(std::optional<std::int32_t> status) {
    if (!m_callOfBatch) return;
    if (status) returnStatus(*status);
    endCall();
}

void Response::finish() {
    if (!m_pendingDone || m_statementFailed) setPendingDone({Token::Done});
    writePendingDone(kDoneFinal);
    m_channel.send(m_out.data(), PacketChannel::Extent::AllAndEnd);
    m_inCall = m_callOfBatch = m_clientGone = false;
    if (m_attention) acknowledgeAttention();
}

void Response::acknowledgeAttention() {
    m_attention = false;
    setPendingDone({.kind = Token::Done, .status = kDoneAttention});
    finish();
}

}  // namespace tds

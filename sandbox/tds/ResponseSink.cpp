#include "ResponseSink.h"

namespace tds {
namespace {

// Looking at the socket costs more than a row, so it is not done for every one.
constexpr std::chrono::milliseconds kLookInterval{2};

}  // namespace

ResponseSink::ResponseSink(PacketChannel& channel, TokenWriter& tokens)
    : m_channel(channel), m_tokens(tokens), m_nextLook(PacketChannel::Clock::now() + kLookInterval) {}

void ResponseSink::columns(std::span<const tsql::Column> columns) {
    flushDone();
    m_tokens.columns(columns);
}

void ResponseSink::row(std::span<const tsql::CellView> cells) {
    m_tokens.row(cells);
    m_channel.sendSome(m_tokens.data());
}

void ResponseSink::statementDone(std::int64_t rowCount, bool isSelect) {
    hold({m_inCall ? Token::DoneInProc : Token::Done, m_failed ? kDoneError : 0U, rowCount, isSelect});
}

void ResponseSink::message(const tsql::Message& message) {
    flushDone();
    if (message.severity >= kLeastErrorSeverity) m_failed = m_anyError = true;
    m_tokens.message(message);
    m_channel.sendSome(m_tokens.data());
}

void ResponseSink::databaseChanged(std::string_view from, std::string_view to) {
    flushDone();
    m_tokens.textChange(EnvChange::Database, to, from);
}

void ResponseSink::transactionChanged(tsql::TransactionEvent event) {
    flushDone();
    m_tokens.transactionChange(event);
}

void ResponseSink::flush() {
    flushDone();
    m_channel.sendNow(m_tokens.data());
}

// Does not throw: the engine may ask from within SQLite, which no exception can cross.
bool ResponseSink::cancelled() {
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

void ResponseSink::hold(Done done) {
    flushDone();
    m_held = done;
    m_failed = false;
}

void ResponseSink::writeDone(unsigned more) {
    m_tokens.done(m_held->kind, m_held->status | more, m_held->rowCount, m_held->isSelect);
    m_held.reset();
}

void ResponseSink::flushDone() {
    if (m_held) writeDone(kDoneMore);
}

void ResponseSink::beginCall() {
    m_inCall = true;
    m_anyError = false;
}

void ResponseSink::endCall() {
    hold({Token::DoneProc, m_failed ? kDoneError : 0U, -1, false});
    m_inCall = false;
}

void ResponseSink::finish() {
    if (!m_held || m_failed) hold({Token::Done, m_failed ? kDoneError : 0U, -1, false});
    writeDone(kDoneFinal);
    m_channel.sendLast(m_tokens.data());
    if (m_attention) acknowledgeAttention();
}

void ResponseSink::refuse() {
    m_failed = true;
    finish();
}

void ResponseSink::acknowledgeAttention() {
    m_tokens.done(Token::Done, kDoneAttention, -1, false);
    m_channel.sendLast(m_tokens.data());
}

}  // namespace tds

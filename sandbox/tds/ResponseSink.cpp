#include "ResponseSink.h"

#include <utility>

namespace tds {
namespace {

// Looking at the socket costs more than a row, so it is not done for every one.
constexpr std::chrono::milliseconds kLookInterval{2};

constexpr int kLeastErrorSeverity = 11;

struct Owning {
    ResponseSink::OwnedCell operator()(tsql::Null) const { return tsql::Null{}; }
    ResponseSink::OwnedCell operator()(std::int64_t value) const { return value; }
    ResponseSink::OwnedCell operator()(double value) const { return value; }
    ResponseSink::OwnedCell operator()(std::string_view value) const { return std::string(value); }
    ResponseSink::OwnedCell operator()(tsql::Blob value) const { return std::basic_string<std::byte>(value); }
};

}  // namespace

tsql::CellView ResponseSink::Output::view() const {
    return std::visit([](const auto& held) { return tsql::CellView(held); }, value);
}

ResponseSink::ResponseSink(PacketChannel& channel, TokenWriter& tokens)
    : m_channel(channel), m_tokens(tokens), m_nextLook(PacketChannel::Clock::now() + kLookInterval) {}

void ResponseSink::beginCall(std::string_view outputMarker) {
    m_inCall = true;
    m_outputMarker = outputMarker;
    m_outputs.clear();
}

void ResponseSink::columns(std::span<const tsql::Column> columns) {
    m_capturing = m_inCall && !columns.empty() && columns.front().name == m_outputMarker;
    if (m_capturing) {
        for (const tsql::Column& column : columns) m_outputs.push_back({column.type, tsql::Null{}});
        return;
    }
    flushDone();
    m_tokens.columns(columns);
}

void ResponseSink::row(std::span<const tsql::CellView> cells) {
    if (m_capturing) {
        for (std::size_t i = 0; i < cells.size() && i < m_outputs.size(); ++i)
            m_outputs[i].value = std::visit(Owning{}, cells[i]);
        return;
    }
    m_tokens.row(cells);
    m_channel.sendSome(m_tokens.data());
}

void ResponseSink::statementDone(std::int64_t rowCount, bool isSelect) {
    if (std::exchange(m_capturing, false)) return;
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

void ResponseSink::writeDone(const Done& done, unsigned more) {
    m_tokens.done(done.kind, done.status | more, done.rowCount, done.isSelect);
}

void ResponseSink::flushDone() {
    if (!m_held) return;
    writeDone(*m_held, kDoneMore);
    m_held.reset();
}

void ResponseSink::endCall() {
    hold({Token::DoneProc, m_failed ? kDoneError : 0U, -1, false});
    m_inCall = false;
}

void ResponseSink::finish() {
    if (m_attention) {
        flushDone();
        m_tokens.done(Token::Done, kDoneAttention, -1, false);
    } else {
        if (!m_held || m_failed) hold({Token::Done, m_failed ? kDoneError : 0U, -1, false});
        writeDone(*m_held, kDoneFinal);
        m_held.reset();
    }
    m_channel.sendLast(m_tokens.data());
}

}  // namespace tds

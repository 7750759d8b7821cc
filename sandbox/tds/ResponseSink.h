// Turns what a batch produces into the tokens of a response, sending as it goes.
#pragma once

#include <optional>

#include "PacketChannel.h"
#include "TokenWriter.h"

namespace tds {

class ResponseSink final : public tsql::ResultSink {
  public:
    ResponseSink(PacketChannel& channel, TokenWriter& tokens);

    void columns(std::span<const tsql::Column> columns) override;
    void row(std::span<const tsql::CellView> cells) override;
    void statementDone(std::int64_t rowCount, bool isSelect) override;
    void message(const tsql::Message& message) override;
    void databaseChanged(std::string_view from, std::string_view to) override;
    void transactionChanged(tsql::TransactionEvent event) override;
    void flush() override;
    bool cancelled() override;

    // Statements of a procedure call end with another token than those of a batch.
    void beginCall();
    // Ends a procedure call within a request; the last one is ended by finish().
    void endCall();
    // Sends what is held back with "more follows"; needed before tokens are written past the sink.
    void flushDone();
    // The response's last token and the rest of its bytes; and if an attention came, its acknowledgement.
    void finish();
    // The whole response to a request that is not run.
    void refuse();
    // A message of its own, as clients wait for it behind the response that they broke off.
    void acknowledgeAttention();
    bool attention() const { return m_attention; }
    bool anyError() const { return m_anyError; }

  private:
    struct Done {
        Token kind;
        unsigned status;
        std::int64_t rowCount;
        bool isSelect;
    };
    void hold(Done done);
    void writeDone(unsigned more);

    PacketChannel& m_channel;
    TokenWriter& m_tokens;
    std::optional<Done> m_held;  // a statement's end is written when it is known whether more follows
    bool m_inCall = false;
    bool m_failed = false;    // an error since the last statement's end
    bool m_anyError = false;  // since the call's or the request's begin
    bool m_attention = false;
    bool m_clientGone = false;
    PacketChannel::Clock::time_point m_nextLook;
};

}  // namespace tds

// Turns what a batch produces into the tokens of a response, sending as it goes.
#pragma once

#include <optional>
#include <variant>
#include <vector>

#include "Engine.h"
#include "PacketChannel.h"
#include "TokenWriter.h"

namespace tds {

class ResponseSink final : public tsql::ResultSink {
  public:
    ResponseSink(PacketChannel& channel, TokenWriter& tokens);

    // Statements of a procedure call end with another token than those of a batch. The result set whose
    // first column has the marker's name is kept for outputs() instead of being sent.
    void beginCall(std::string_view outputMarker);

    void columns(std::span<const tsql::Column> columns) override;
    void row(std::span<const tsql::CellView> cells) override;
    void statementDone(std::int64_t rowCount, bool isSelect) override;
    void message(const tsql::Message& message) override;
    void databaseChanged(std::string_view from, std::string_view to) override;
    bool cancelled() override;

    using OwnedCell =
        std::variant<tsql::Null, std::int64_t, double, std::string, std::basic_string<std::byte>>;
    struct Output {
        tsql::SqlType type;
        OwnedCell value;
        tsql::CellView view() const;
    };
    const std::vector<Output>& outputs() const { return m_outputs; }

    // Sends what is held back with "more follows"; needed before tokens are written past the sink.
    void flushDone();
    // Ends a procedure call within a request; the last one is ended by finish().
    void endCall();
    // The response's last token, which acknowledges the attention if one came, and the rest of its bytes.
    void finish();
    bool attention() const { return m_attention; }
    void acknowledgeAttention() { m_attention = true; }
    bool anyError() const { return m_anyError; }

  private:
    struct Done {
        Token kind;
        unsigned status;
        std::int64_t rowCount;
        bool isSelect;
    };
    void hold(Done done);
    void writeDone(const Done& done, unsigned more);

    PacketChannel& m_channel;
    TokenWriter& m_tokens;
    std::optional<Done> m_held;  // a statement's end is written when it is known whether more follows
    bool m_inCall = false;
    std::string m_outputMarker;
    bool m_capturing = false;
    std::vector<Output> m_outputs;
    bool m_failed = false;  // an error since the last statement's end
    bool m_anyError = false;
    bool m_attention = false;
    bool m_clientGone = false;
    PacketChannel::Clock::time_point m_nextLook;
};

}  // namespace tds

// What a batch produces as the tokens of a response, [MS-TDS] 2.2.7, in the form of the client's version of
// the protocol; sent as it goes.
#pragma once

#include <optional>
#include <vector>

#include "Engine.h"
#include "PacketChannel.h"
#include "WireValue.h"

namespace tds {

class Response final : public tsql::ResultSink {
  public:
    // serverName stands in every message.
    Response(PacketChannel& channel, std::string serverName)
        : m_channel(channel), m_serverName(std::move(serverName)) {}
    void setVersion(Version version) { m_version = version; }
    Version version() const { return m_version; }

    void columns(std::span<const tsql::Column> columns) override;
    // A row of the columns last announced. Throws ValueError and leaves nothing of the row.
    void row(std::span<const tsql::CellView> cells) override;
    void statementDone(std::int64_t rowCount, bool isSelect) override;
    void message(const tsql::Message& message) override;
    void databaseChanged(std::string_view from, std::string_view to) override;
    // Each transaction has a descriptor, by which drivers follow it.
    void transactionChanged(tsql::TransactionEvent event) override;
    void flush() override;
    bool cancelled() override;

    void loginAck();
    void textChange(EnvChange what, std::string_view to, std::string_view from);
    void binaryChange(EnvChange what, ByteView to = {}, ByteView from = {});
    void returnStatus(std::int32_t status);
    void returnValue(std::string_view name, const tsql::SqlType& type, const tsql::CellView& value);

    // Statements of a procedure call end with another token than those of a batch.
    void beginCall();
    // Ends a procedure call within a request; the last one is ended by finish().
    void endCall();
    // The last token and the rest of the bytes; and if an attention came, its acknowledgement. What is
    // written then belongs to the next response.
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
        std::int64_t rowCount = -1;  // -1 for none
        bool isSelect = false;
    };
    void token(Token token);
    void hold(Done done);
    void writeDone(unsigned more);
    void change(EnvChange what, ByteView to, ByteView from, std::size_t unitSize);
    void userTypeAndFlags(unsigned flags);
    void writeCells(std::span<const tsql::CellView> cells);
    unsigned failure() const { return m_failed ? kDoneError : 0U; }

    PacketChannel& m_channel;
    std::string m_serverName;
    Version m_version = Version::V74;
    ByteWriter m_out;
    std::vector<WireType> m_columnTypes;
    std::uint64_t m_transaction = 0;  // the last one's descriptor
    std::optional<Done> m_held;       // a statement's end is written when it is known whether more follows
    bool m_inCall = false;
    bool m_failed = false;    // an error since the last statement's end
    bool m_anyError = false;  // since the call's or the request's begin
    bool m_attention = false;
    bool m_clientGone = false;
    PacketChannel::Clock::time_point m_nextLook;
};

}  // namespace tds

// Responses as token streams: [MS-TDS] 2.2.7.
#pragma once

#include "PacketChannel.h"
#include "WireType.h"
#include "execute/Client.h"

namespace tds {

// Writes results in the form of the client's protocol version and sends them in packets as they grow.
// One object serves all responses of a connection, one after the other.
class Response final : public tsql::ResultSink {
  public:
    // serverName: sent with every message. The channel must outlive the object.
    Response(PacketChannel& channel, std::string serverName)
        : m_channel(channel), m_serverName(std::move(serverName)) {}
    void setVersion(Version version) { m_version = version; }
    Version version() const { return m_version; }

    void columns(std::span<const tsql::Column> columns) override;
    // A row of the last columns(). Throws ValueError for a value its column cannot hold; nothing of the row
    // is sent then.
    void row(std::span<const tsql::CellView> cells) override;
    void statementDone(std::int64_t rowCount, tsql::StatementKind kind) override;
    void procedureBegan() override;
    void procedureEnded(std::optional<std::int32_t> status) override;
    void message(const tsql::Message& message) override;
    void databaseChanged(std::string_view from, std::string_view to) override {
        textChange(EnvChange::Database, to, from);
    }
    // Every transaction gets a new descriptor. Drivers keep track of it.
    void transactionChanged(tsql::TransactionEvent event) override;
    void flush() override;
    bool cancelled() override;

    void loginAck();
    void sspi(ByteView token);
    // Sends the tokens so far without DONE, since the client answers them within its login.
    void finishLoginStep() { m_channel.send(m_out.data(), PacketChannel::Extent::AllAndEnd); }
    void textChange(EnvChange what, std::string_view to, std::string_view from);
    // unitSize: bytes counted as one in the length fields.
    void binaryChange(EnvChange what, ByteView to = {}, ByteView from = {}, std::size_t unitSize = 1);
    void returnStatus(std::int32_t status);
    // ordinal: place of the parameter in the client's call, from 0.
    void returnValue(std::ptrdiff_t ordinal, std::string_view name, const tsql::SqlType& type,
                     const tsql::CellView& value);

    // Enclose a procedure call, whose statements end with DONEINPROC instead of DONE.
    void beginCall() { m_inCall = true; }
    void endCall();
    // Ends the response with its last DONE token. Acknowledges an attention if one has arrived.
    void finish();
    void refuse() { m_statementFailed = true; }  // fails without a message
    // Sends the acknowledgement of an attention, which is a response of its own behind the cancelled one.
    void acknowledgeAttention();
    bool attention() const { return m_attention; }

  private:
    struct Done {
        Token kind;
        std::int64_t rowCount = -1;  // -1: no count
        unsigned command = 0;
        unsigned status = 0;
    };
    void beginToken(Token token);
    void setPendingDone(Done done);
    void writePendingDone(unsigned moreFlag);
    void writeType(const WireType& type, unsigned flags);

    PacketChannel& m_channel;
    std::string m_serverName;
    Version m_version = Version::V74;
    ByteWriter m_out;
    std::vector<WireType> m_columnTypes;
    std::uint64_t m_transaction = 0;    // descriptor of the last transaction
    std::optional<Done> m_pendingDone;  // not written until it is known whether more follows
    bool m_inCall = false;
    bool m_callOfBatch = false;      // the call is an EXEC of the batch
    bool m_statementFailed = false;  // an error was sent since the last DONE
    bool m_attention = false;
    bool m_clientGone = false;
    PacketChannel::Clock::time_point m_nextAttentionCheck;
};

}  // namespace tds

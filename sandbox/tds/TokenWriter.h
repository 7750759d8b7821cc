// The tokens of a response, [MS-TDS] 2.2.7, in the form of the client's version of the protocol.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Engine.h"
#include "WireType.h"

namespace tds {

class TokenWriter {
  public:
    // serverName stands in every message.
    explicit TokenWriter(std::string serverName) : m_serverName(std::move(serverName)) {}
    void setVersion(Version version) { m_version = version; }

    void loginAck();
    void message(const tsql::Message& message);
    void textChange(EnvChange what, std::string_view to, std::string_view from);
    void binaryChange(EnvChange what, ByteView to = {}, ByteView from = {});
    // Each transaction has a descriptor, by which drivers follow it.
    void transactionChange(tsql::TransactionEvent event);
    void columns(std::span<const tsql::Column> columns);
    // A row of the columns last announced. Throws ValueError and leaves nothing of the row.
    void row(std::span<const tsql::CellView> cells);
    void returnStatus(std::int32_t status);
    void returnValue(std::string_view name, const tsql::SqlType& type, const tsql::CellView& value);
    // rowCount: -1 for none.
    void done(Token kind, unsigned status, std::int64_t rowCount, bool isSelect);

    Bytes& data() { return m_out.data(); }

  private:
    void change(EnvChange what, ByteView to, ByteView from, std::size_t unitSize);
    void token(Token token) { m_out.u8(static_cast<std::uint8_t>(token)); }
    void userTypeAndFlags(unsigned flags);
    void writeCells(std::span<const tsql::CellView> cells);

    std::string m_serverName;
    Version m_version = Version::V74;
    ByteWriter m_out;
    std::vector<WireType> m_columnTypes;
    std::uint64_t m_transaction = 0;  // the last one's descriptor
};

}  // namespace tds

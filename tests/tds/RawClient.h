// A TDS client that sends any bytes, valid or not.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Program.h"

namespace support {

// Types of packets.
inline constexpr std::uint8_t kSqlBatch = 1, kRpc = 3, kAttention = 6, kTransaction = 14, kLogin7 = 16,
                              kPrelogin = 18;

std::string packet(std::uint8_t type, std::string_view body, std::uint8_t status = 1);
std::string preloginPacket();
// Body of a LOGIN7 message, version 7.4.
std::string loginPacket(std::string_view user, std::string_view password, std::string_view database = {});
// Body of a SQL batch message, headers included.
std::string batchPacket(std::string_view sql);

class RawClient {
  public:
    explicit RawClient(int port);
    void send(std::string_view bytes);
    // Returns false if the server refuses the login or closes the connection.
    bool logIn(std::string_view user, std::string_view password);
    // The rest of one response; empty if the connection is closed. Throws after a minute of silence.
    std::string response();
    // Body of the next packet; empty if the connection is closed.
    std::string packetBody(bool& last);
    bool isClosed();  // reads until the server closes the connection

  private:
    std::string receive(std::size_t bytes);

    Descriptor m_socket;
};

// Status of the DONE token that ends a response.
unsigned finalStatus(std::string_view response);

}  // namespace support

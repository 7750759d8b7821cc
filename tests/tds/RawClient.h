// A client that sends what it is told, right or wrong.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Program.h"

namespace support {

std::string packet(std::uint8_t type, std::string_view body, std::uint8_t status = 1);
std::string preloginPacket();
// A LOGIN7 message's body, by version 7.4.
std::string loginPacket(std::string_view user, std::string_view password, std::string_view database = {});
// A batch's body with its headers.
std::string batchPacket(std::string_view sql);

class RawClient {
  public:
    explicit RawClient(int port);
    void send(std::string_view bytes);
    // Logs in; false when the server refuses or hangs up.
    bool logIn(std::string_view user, std::string_view password);
    // The rest of one response; empty when the connection ended. Fails the test after a minute.
    std::string response();
    // One packet's body, of at least a byte; empty when the connection ended.
    std::string packetBody(bool& last);
    bool isClosed();  // waits for it

  private:
    std::string receive(std::size_t bytes);

    Descriptor m_socket;
};

// The status of the DONE token that ends a response.
unsigned finalStatus(std::string_view response);

}  // namespace support

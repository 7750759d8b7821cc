// Packets over a connected socket: requests are put together from them, responses cut into them.
// [MS-TDS] 2.2.3.1 (packet header), 2.2.1.7 (attention).
#pragma once

#include <chrono>
#include <optional>

#include "ByteReader.h"
#include "Protocol.h"

namespace tds {

// The client went away, was too slow to log in, or the server is ending.
class ConnectionClosed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Request {
    enum class Reset : std::uint8_t { None, All, AroundTransaction };
    PacketType type;
    Reset reset = Reset::None;
    bool isTakenBack = false;  // by a client that did not want to send it to its end
    bool isTooLong = false;    // and therefore not kept
    Bytes data;
};

class PacketChannel {
  public:
    using Clock = std::chrono::steady_clock;

    // socket stays the caller's. sessionId stands in the header of every packet sent.
    PacketChannel(int socket, std::uint16_t sessionId) : m_socket(socket), m_sessionId(sessionId) {}

    // Until then nothing but the login's own small messages is read, and only before the deadline.
    void setLoginDeadline(Clock::time_point deadline) { m_loginDeadline = deadline; }
    void loginIsDone() { m_loginDeadline.reset(); }
    void setPacketSize(std::size_t bytes) { m_packetSize = bytes; }

    // The next whole request. Throws ConnectionClosed or ProtocolError.
    Request readRequest();
    // True when an attention has come, which is then taken. Never waits. Throws ConnectionClosed.
    bool attentionArrived();

    // Sends whole packets of the response, leaving the rest in `response`; cheap while it is short.
    void sendSome(Bytes& response);
    // Sends all there is so far.
    void sendNow(Bytes& response);
    // Sends all that is left as the end of the response.
    void sendLast(Bytes& response);

  private:
    struct Header {
        PacketType type;
        std::uint8_t status;
        std::size_t length;
    };
    Header peekHeader() const;
    std::size_t mostBytes(PacketType type) const;
    void need(std::size_t bytes);
    bool receive(bool wait);
    void waitReadable() const;
    void send(Bytes& response, bool last, bool now = false);
    void sendAll(ByteView data) const;
    std::size_t buffered() const { return m_input.size() - m_inputPosition; }

    int m_socket;
    std::uint16_t m_sessionId;
    std::size_t m_packetSize = 4096;
    std::uint8_t m_nextPacket = 1;
    std::optional<Clock::time_point> m_loginDeadline;
    Bytes m_input;  // received, taken up to m_inputPosition
    std::size_t m_inputPosition = 0;
};

}  // namespace tds

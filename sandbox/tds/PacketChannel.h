// Packets on a connected socket: [MS-TDS] 2.2.3.1 (packet header), 2.2.1.7 (attention).
#pragma once

#include <chrono>
#include <optional>

#include "Protocol.h"
#include "Tls.h"

namespace tds {

// End of a connection without a protocol error: the client has left, did not log in in time, or the server
// stops.
struct ConnectionClosed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A message from the client, assembled from its packets.
struct Request {
    PacketType type;
    std::uint8_t status = 0;  // of the first packet: whether the session is reset first
    bool isIgnored = false;   // the client cancelled the message while sending it
    bool isTooLong = false;   // data is empty
    Bytes data;
};

// Assembles requests from packets and splits responses into packets.
class PacketChannel {
  public:
    using Clock = std::chrono::steady_clock;

    // The caller owns the socket. Every packet sent carries the session id.
    PacketChannel(int socket, std::uint16_t sessionId) : m_socket(socket), m_sessionId(sessionId) {}

    // From setLoginDeadline() to finishLogin() only the small messages of a login are accepted, and
    // readRequest() throws ConnectionClosed at the deadline. packetSize: in bytes, the header included.
    void setLoginDeadline(Clock::time_point deadline) { m_loginDeadline = deadline; }
    void finishLogin(std::size_t packetSize) {
        m_packetSize = packetSize;
        m_loginDeadline.reset();
    }
    // Performs the TLS handshake, whose messages are wrapped in PRELOGIN packets, and encrypts everything
    // after it. The context must outlive the channel. Throws ConnectionClosed or ProtocolError.
    void startTls(SSL_CTX& context);
    // Continues without encryption, as after an encrypted login.
    void endTls() { m_tls.reset(); }

    // Waits for a whole request. Throws ConnectionClosed or ProtocolError.
    Request readRequest();
    // Removes an attention packet from the input; false when none has arrived. Never blocks. Throws
    // ConnectionClosed or ProtocolError.
    bool attentionArrived();

    enum class Extent : std::uint8_t {
        FullPackets,  // once there are enough of them for a system call
        All,
        AllAndEnd,  // marks the last packet as the end of the response
    };
    // Sends a part of the response and removes it. Throws ConnectionClosed.
    void send(Bytes& response, Extent extent, PacketType type = PacketType::Response);

  private:
    struct Header {
        PacketType type;
        std::uint8_t status;
        std::size_t length;
    };
    Header peekHeader() const;
    std::size_t maxMessageBytes(PacketType type) const;
    void fillBuffer(std::size_t bytes) {
        while (buffered() < bytes) receive(/*flags=*/0);
    }
    void receive(int flags);
    void appendInput(ByteView received);
    void writeSocket(ByteView data) const;
    std::size_t buffered() const { return m_input.size() - m_inputPosition; }

    int m_socket;
    std::uint16_t m_sessionId;
    std::size_t m_packetSize = kDefaultPacketSize;
    std::uint8_t m_nextPacket = 1;
    std::optional<Clock::time_point> m_loginDeadline;  // empty after the login
    Bytes m_input;                                     // received, consumed up to m_inputPosition
    std::size_t m_inputPosition = 0;
    std::optional<TlsSession> m_tls;  // empty: the connection is not encrypted
};

}  // namespace tds

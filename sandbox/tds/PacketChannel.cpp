#include "PacketChannel.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "ByteWriter.h"

namespace tds {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kBlock = 32768;  // several packets in one system call

struct MessageLimit {
    PacketType type;
    bool duringLogin;  // accepted only then; otherwise only after it
    std::size_t maxBytes;
};
constexpr MessageLimit kMessageLimits[] = {
    {PacketType::Prelogin, true, 4096},          {PacketType::Login7, true, (128UL << 10) - 1},
    {PacketType::SspiMessage, true, 64UL << 10}, {PacketType::SqlBatch, false, 64UL << 20},
    {PacketType::Rpc, false, 64UL << 20},        {PacketType::TransactionManager, false, 64UL << 10},
    {PacketType::BulkLoad, false, 64UL << 20},   {PacketType::Attention, false, 0},
};

constexpr std::uint8_t kStatusEndOfMessage = 0x01, kStatusIgnore = 0x02;

}  // namespace

// Throws ProtocolError for a type that is not accepted now.
std::size_t PacketChannel::maxMessageBytes(PacketType type) const {
    for (const MessageLimit& limit : kMessageLimits)
        if (limit.type == type && limit.duringLogin == m_loginDeadline.has_value()) return limit.maxBytes;
    throw ProtocolError("unexpected packet of type " + std::to_string(static_cast<int>(type)));
}

PacketChannel::Header PacketChannel::peekHeader() const {
    ByteReader reader(ByteView(m_input).substr(m_inputPosition));
    const Header header{static_cast<PacketType>(reader.u8()), reader.u8(), reader.u16BigEndian()};
    const std::size_t maxLength = m_loginDeadline ? kMaxPacketSize : m_packetSize;
    if (header.length < kHeaderSize || header.length > maxLength)
        throw ProtocolError("invalid packet length " + std::to_string(header.length));
    return header;
}

Request PacketChannel::readRequest() {
    Request request{};
    for (bool isFirst = true, isLast = false; !isLast; isFirst = false) {
        fillBuffer(kHeaderSize);
        const Header header = peekHeader();
        const std::size_t maxBytes = maxMessageBytes(header.type);
        if (isFirst || header.type == PacketType::Attention)
            request = {.type = header.type, .status = header.status, .data = {}};
        else if (header.type != request.type)
            throw ProtocolError("the packets of a message have different types");
        fillBuffer(header.length);
        request.data.append(m_input, m_inputPosition + kHeaderSize, header.length - kHeaderSize);
        m_inputPosition += header.length;
        if (request.data.size() > maxBytes) {
            if (m_loginDeadline || header.type == PacketType::Attention)
                throw ProtocolError("a message is longer than " + std::to_string(maxBytes) + " bytes");
            request.isTooLong = true;
        }
        if (request.isTooLong) request.data.clear();
        request.isIgnored = (header.status & kStatusIgnore) != 0;
        isLast = (header.status & kStatusEndOfMessage) != 0;
    }
    return request;
}

bool PacketChannel::attentionArrived() {
    pollfd client{m_socket, POLLIN | POLLRDHUP, 0};
    poll(&client, 1, 0);
    if ((client.revents & ~POLLIN) != 0) throw ConnectionClosed("the client closed the connection");
    if (buffered() < kHeaderSize && client.revents != 0) receive(MSG_DONTWAIT);
    if (buffered() < kHeaderSize) return false;
    const Header header = peekHeader();
    if (header.type != PacketType::Attention || header.length > kHeaderSize) return false;
    m_inputPosition += header.length;
    return true;
}

// Appends received bytes to the input, unless it is interrupted or nothing has arrived.
void PacketChannel::receive(int flags) {
    m_input.erase(0, m_inputPosition);
    m_inputPosition = 0;
    const bool waits = (flags & MSG_DONTWAIT) == 0;
    if (waits && m_loginDeadline) {
        using std::chrono::milliseconds;
        const auto left = std::chrono::duration_cast<milliseconds>(*m_loginDeadline - Clock::now()).count();
        pollfd readable{m_socket, POLLIN, 0};
        if (left <= 0 || poll(&readable, 1, static_cast<int>(left)) == 0)
            throw ConnectionClosed("the login timed out");
    }
    char block[kBlock];
    const ssize_t got = recv(m_socket, block, sizeof block, flags);
    if (got > 0) return appendInput({block, static_cast<std::size_t>(got)});
    const bool nothingYet = errno == EINTR || (!waits && (errno == EAGAIN || errno == EWOULDBLOCK));
    if (got == 0 || !nothingYet) throw ConnectionClosed("the client closed the connection");
}

void PacketChannel::appendInput(ByteView received) {
    if (!m_tls || !m_tls->isEstablished()) return static_cast<void>(m_input.append(received));
    const bool isOpen = m_tls->decrypt(received, m_input);
    writeSocket(m_tls->takeOutput());  // replies of the protocol itself, such as new keys
    if (!isOpen && buffered() == 0) throw ConnectionClosed("the client closed the connection");
}

void PacketChannel::startTls(SSL_CTX& context) {
    m_tls.emplace(context);
    while (!m_tls->isEstablished()) {
        const Request request = readRequest();
        if (request.type != PacketType::Prelogin)
            throw ProtocolError("the client did not start TLS, which the server requires");
        const bool continues = m_tls->handshake(request.data);
        Bytes reply = m_tls->takeOutput();
        if (!reply.empty()) send(reply, Extent::AllAndEnd, PacketType::Prelogin);
        if (!continues) throw ProtocolError("the TLS handshake failed: " + takeTlsErrors());
    }
    // In TLS 1.3 the client ends the handshake and may already have sent more.
    const Bytes received = std::exchange(m_input, {}).substr(std::exchange(m_inputPosition, 0));
    if (!received.empty()) appendInput(received);
}

void PacketChannel::send(Bytes& response, Extent extent, PacketType type) {
    if (extent == Extent::FullPackets && response.size() < kBlock) return;
    const std::size_t room = m_packetSize - kHeaderSize;
    ByteWriter wire;
    wire.data().reserve(response.size() + (response.size() / room + 1) * kHeaderSize);
    ByteView rest = response;
    const auto hasPacket = [&] {
        if (extent == Extent::AllAndEnd) return true;  // the last packet may be empty
        // A packet that fills up exactly waits: it may turn out to be the last, which is marked.
        return extent == Extent::All ? !rest.empty() : rest.size() > room;
    };
    for (bool ended = false; !ended && hasPacket();) {
        const ByteView part = rest.substr(0, room);
        rest.remove_prefix(part.size());
        ended = extent == Extent::AllAndEnd && rest.empty();
        wire.u8(static_cast<std::uint8_t>(type));
        wire.u8(ended ? kStatusEndOfMessage : 0);
        wire.bigEndian(part.size() + kHeaderSize, 2);
        wire.bigEndian(m_sessionId, 2);
        wire.u8(m_nextPacket++);
        wire.u8(0);  // window, unused
        wire.bytes(part);
    }
    if (extent == Extent::AllAndEnd) m_nextPacket = 1;
    const bool isEncrypted = m_tls && type != PacketType::Prelogin;
    if (isEncrypted) m_tls->encrypt(wire.data());
    writeSocket(isEncrypted ? m_tls->takeOutput() : wire.data());
    response.erase(0, response.size() - rest.size());
}

void PacketChannel::writeSocket(ByteView data) const {
    while (!data.empty()) {
        const ssize_t sent = ::send(m_socket, data.data(), data.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0)
            throw ConnectionClosed("the client closed the connection before the end of the response");
        data.remove_prefix(static_cast<std::size_t>(sent));
    }
}

}  // namespace tds

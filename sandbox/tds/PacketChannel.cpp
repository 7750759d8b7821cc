#include "PacketChannel.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "ByteWriter.h"

namespace tds {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kMostPacketBytes = 32767;
constexpr std::size_t kReceiveBlock = 32768;
constexpr std::size_t kSendBlock = 32768;  // several packets go out in one system call

struct Limit {
    PacketType type;
    bool atLogin;  // before the session or within it
    std::size_t mostBytes;
};
constexpr Limit kLimits[] = {
    {PacketType::Prelogin, true, 4096},
    {PacketType::Login7, true, (128UL << 10) - 1},
    {PacketType::SqlBatch, false, 64UL << 20},
    {PacketType::Rpc, false, 64UL << 20},
    {PacketType::TransactionManager, false, 64UL << 10},
    {PacketType::Attention, false, 0},
};

constexpr std::uint8_t kStatusEndOfMessage = 0x01;
constexpr std::uint8_t kStatusIgnore = 0x02;
constexpr std::uint8_t kStatusReset = 0x08, kStatusResetAround = 0x10;

Request::Reset resetOf(std::uint8_t status) {
    if ((status & kStatusReset) != 0) return Request::Reset::All;
    return (status & kStatusResetAround) != 0 ? Request::Reset::AroundTransaction : Request::Reset::None;
}

}  // namespace

// How long a message of this type may become; throws for one that may not come now.
std::size_t PacketChannel::mostBytes(PacketType type) const {
    for (const Limit& limit : kLimits)
        if (limit.type == type && limit.atLogin == m_loginDeadline.has_value()) return limit.mostBytes;
    throw ProtocolError("a packet of type " + std::to_string(static_cast<int>(type)) +
                        " does not belong here");
}

PacketChannel::Header PacketChannel::peekHeader() const {
    ByteReader reader(ByteView(m_input).substr(m_inputPosition));
    Header header{};
    header.type = static_cast<PacketType>(reader.u8());
    header.status = reader.u8();
    header.length = reader.u16BigEndian();
    const std::size_t most = m_loginDeadline ? kMostPacketBytes : m_packetSize;
    if (header.length < kHeaderSize || header.length > most)
        throw ProtocolError("a packet gives " + std::to_string(header.length) + " as its length");
    return header;
}

Request PacketChannel::readRequest() {
    Request request{};
    for (bool ends = false, first = true; !ends; first = false) {
        need(kHeaderSize);
        const Header header = peekHeader();
        const std::size_t most = mostBytes(header.type);
        if (first || header.type == PacketType::Attention)
            request = {header.type, resetOf(header.status), false, false, {}};
        else if (header.type != request.type)
            throw ProtocolError("the packets of a message differ in their type");
        need(header.length);
        request.data.append(m_input, m_inputPosition + kHeaderSize, header.length - kHeaderSize);
        m_inputPosition += header.length;
        if (request.data.size() > most && (m_loginDeadline || most == 0))
            throw ProtocolError("a message is longer than " + std::to_string(most) + " bytes");
        if (request.data.size() > most) request.isTooLong = true;
        if (request.isTooLong) request.data.clear();
        ends = (header.status & kStatusEndOfMessage) != 0;
        request.isTakenBack = (header.status & kStatusIgnore) != 0;
    }
    return request;
}

bool PacketChannel::attentionArrived() {
    pollfd client{m_socket, POLLIN | POLLRDHUP, 0};
    poll(&client, 1, 0);
    if ((client.revents & ~POLLIN) != 0) throw ConnectionClosed("the client closed the connection");
    if (buffered() < kHeaderSize && client.revents != 0) receive(false);
    if (buffered() < kHeaderSize) return false;
    const Header header = peekHeader();
    if (header.type != PacketType::Attention || header.length > kHeaderSize) return false;
    m_inputPosition += header.length;
    return true;
}

void PacketChannel::need(std::size_t bytes) {
    while (buffered() < bytes) receive(true);
}

void PacketChannel::waitReadable() const {
    using std::chrono::milliseconds;
    const auto left = std::chrono::duration_cast<milliseconds>(*m_loginDeadline - Clock::now());
    pollfd readable{m_socket, POLLIN, 0};
    if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) == 0)
        throw ConnectionClosed("the login took too long");
}

// False when nothing has come and `wait` is false.
bool PacketChannel::receive(bool wait) {
    m_input.erase(0, m_inputPosition);
    m_inputPosition = 0;
    if (wait && m_loginDeadline) waitReadable();
    char block[kReceiveBlock];
    const ssize_t got = recv(m_socket, block, sizeof block, wait ? 0 : MSG_DONTWAIT);
    const int error = errno;
    if (got > 0) {
        m_input.append(block, static_cast<std::size_t>(got));
        return true;
    }
    if (got < 0 && error == EINTR) return false;
    if (got < 0 && !wait && (error == EAGAIN || error == EWOULDBLOCK)) return false;
    throw ConnectionClosed("the client closed the connection");
}

void PacketChannel::sendSome(Bytes& response) {
    if (response.size() >= kSendBlock) send(response, false);
}

void PacketChannel::sendNow(Bytes& response) {
    send(response, false, true);
}

void PacketChannel::sendLast(Bytes& response) {
    send(response, true);
    m_nextPacket = 1;
}

void PacketChannel::send(Bytes& response, bool last, bool now) {
    const std::size_t room = m_packetSize - kHeaderSize;
    ByteWriter wire;
    wire.data().reserve(response.size() + (response.size() / room + 1) * kHeaderSize);
    ByteView rest = response;
    // The last packet must not be sent before it is known to be the last.
    for (bool ended = false; !ended && (rest.size() > room || last || (now && !rest.empty()));) {
        const ByteView part = rest.substr(0, room);
        rest.remove_prefix(part.size());
        ended = last && rest.empty();
        wire.u8(static_cast<std::uint8_t>(PacketType::Response));
        wire.u8(ended ? kStatusEndOfMessage : 0);
        wire.bigEndian(part.size() + kHeaderSize, 2);
        wire.bigEndian(m_sessionId, 2);
        wire.u16(m_nextPacket++);  // and an unused byte
        wire.bytes(part);
    }
    sendAll(wire.data());
    response.erase(0, response.size() - rest.size());
}

void PacketChannel::sendAll(ByteView data) const {
    while (!data.empty()) {
        const ssize_t sent = ::send(m_socket, data.data(), data.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0) throw ConnectionClosed("the client does not take the response any more");
        data.remove_prefix(static_cast<std::size_t>(sent));
    }
}

}  // namespace tds

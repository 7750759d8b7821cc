#include "RawClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "ByteWriter.h"

namespace support {
namespace {

constexpr std::size_t kHeaderSize = 8, kFixedLoginSize = 94, kDoneSize = 13;

std::string obscured(std::string_view password) {
    std::string wire = tds::utf16FromUtf8(password);
    for (char& c : wire) {
        const auto byte = static_cast<unsigned char>(c);
        c = static_cast<char>(((byte << 4 | byte >> 4) & 0xFF) ^ 0xA5);
    }
    return wire;
}

}  // namespace

std::string packet(std::uint8_t type, std::string_view body, std::uint8_t status) {
    const std::size_t length = body.size() + kHeaderSize;
    const std::uint8_t header[] = {type, status, std::uint8_t(length >> 8), std::uint8_t(length), 0, 0, 1, 0};
    return std::string(header, std::end(header)).append(body);
}

std::string preloginPacket() {
    using namespace std::string_literals;
    return packet(kPrelogin, "\x00\x00\x0B\x00\x06\x01\x00\x11\x00\x01\xFF\x10\0\0\0\0\0\x02"s);
}

std::string loginPacket(std::string_view user, std::string_view password, std::string_view database) {
    const std::string fields[] = {{}, tds::utf16FromUtf8(user),    obscured(password), {}, {}, {}, {},
                                  {}, tds::utf16FromUtf8(database)};
    tds::ByteWriter out;
    std::string data;
    for (const std::string& field : fields) data += field;
    out.u32(kFixedLoginSize + data.size());
    out.u32(0x74000004);
    out.bytes(std::string(28, '\0'));
    std::size_t offset = kFixedLoginSize;
    for (const std::string& field : fields) {
        out.u16(offset);
        out.u16(field.size() / 2);
        offset += field.size();
    }
    out.bytes(std::string(kFixedLoginSize - out.size(), '\0'));
    out.bytes(data);
    return out.data();
}

std::string batchPacket(std::string_view sql) {
    tds::ByteWriter out;
    out.u32(22);  // all headers: the transaction header only
    out.u32(18);
    out.u16(2);
    out.u64(0);
    out.u32(1);
    out.bytes(tds::utf16FromUtf8(sql));
    return out.data();
}

RawClient::RawClient(int port) : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval limit{60, 0};
    setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    if (connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::system_error(errno, std::generic_category(), "connect");
}

// If the server has closed the connection, the next read notices it.
void RawClient::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

bool RawClient::logIn(std::string_view user, std::string_view password) {
    send(preloginPacket());
    if (response().empty()) return false;
    send(packet(kLogin7, loginPacket(user, password)));
    return finalStatus(response()) == 0;
}

std::string RawClient::receive(std::size_t bytes) {
    std::string data(bytes, '\0');
    const ssize_t got = recv(m_socket.get(), data.data(), bytes, MSG_WAITALL);
    if (got < 0 && errno != ECONNRESET) throw std::system_error(errno, std::generic_category(), "recv");
    data.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return data;
}

std::string RawClient::packetBody(bool& last) {
    const std::string header = receive(kHeaderSize);
    last = true;
    if (header.size() < kHeaderSize) return {};
    last = (header[1] & 1) != 0;
    tds::ByteReader reader(std::string_view(header).substr(2));
    return receive(reader.u16BigEndian() - kHeaderSize);
}

std::string RawClient::response() {
    std::string body;
    for (bool last = false; !last;) body += packetBody(last);
    return body;
}

bool RawClient::isClosed() {
    while (!receive(1).empty()) continue;
    return true;
}

unsigned finalStatus(std::string_view response) {
    if (response.size() < kDoneSize) throw std::runtime_error("the response does not end with a DONE token");
    tds::ByteReader reader(response.substr(response.size() - kDoneSize));
    if (reader.u8() < 0xFD) throw std::runtime_error("the response does not end with a DONE token");
    return reader.u16();
}

}  // namespace support

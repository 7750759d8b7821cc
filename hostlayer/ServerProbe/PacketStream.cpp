#include "PacketStream.h"

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace hostlayer {
namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr char kPrelogin = 0x12;
constexpr char kReply = 0x04;
constexpr char kLastPacket = 1;  // status

std::string errorText(int error) {
    return std::generic_category().message(error);
}

bool isLoopbackAddress(const sockaddr& address) {
    constexpr std::uint32_t kLoopbackNet = 127;
    if (address.sa_family == AF_INET)
        return ntohl(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr) >> 24 == kLoopbackNet;
    return address.sa_family == AF_INET6 &&
           IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
}

std::string numericName(const addrinfo& address) {
    char host[NI_MAXHOST] = "";
    char port[NI_MAXSERV] = "";
    ::getnameinfo(address.ai_addr, address.ai_addrlen, host, sizeof host, port, sizeof port,
                  NI_NUMERICHOST | NI_NUMERICSERV);
    return std::string(host) + " port " + port;
}

}  // namespace

struct PacketStream::Address {
    const addrinfo& info;
};

PacketStream::PacketStream(const std::string& host, const std::string& port,
                           std::chrono::milliseconds limit) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (const int error = ::getaddrinfo(host.c_str(), port.c_str(), &wanted, &found); error != 0)
        throw ProbeFailure("the name " + host + " cannot be resolved: " + ::gai_strerror(error));
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses(found, ::freeaddrinfo);
    const auto deadline = Clock::now() + limit;
    std::string problems;
    auto left = std::ptrdiff_t{0};
    for (const addrinfo* address = found; address != nullptr; address = address->ai_next) ++left;
    for (const addrinfo* address = found; address != nullptr; address = address->ai_next, --left) {
        const auto now = Clock::now();
        m_deadline = now + (deadline - now) / left;  // a silent address leaves time for the others
        const std::string problem = connectTo({*address});
        m_deadline = deadline;
        if (problem.empty()) return;
        problems += (problems.empty() ? "" : "; ") + numericName(*address) + ": " + problem;
    }
    throw ProbeFailure(problems);
}

PacketStream::~PacketStream() {
    if (m_socket >= 0) ::close(m_socket);
}

// Returns the reason of a failure, and then has no socket.
std::string PacketStream::connectTo(const Address& address) {
    const addrinfo& info = address.info;
    m_socket = ::socket(info.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_socket < 0) return errorText(errno);
    int error = ::connect(m_socket, info.ai_addr, info.ai_addrlen) == 0 ? 0 : errno;
    const bool isAnswered = error != EINPROGRESS || isReady(POLLOUT);
    if (error == EINPROGRESS && isAnswered) {
        socklen_t size = sizeof error;
        ::getsockopt(m_socket, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    if (isAnswered && error == 0) {
        m_isLoopback = isLoopbackAddress(*info.ai_addr);
        return "";
    }
    ::close(m_socket);
    m_socket = -1;
    return isAnswered ? errorText(error) : "no answer";
}

// False after the deadline even for a socket that is ready: a server that never stops sending always is.
bool PacketStream::isReady(short event) const {
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now()).count();
        if (left <= 0) return false;
        pollfd socket{m_socket, event, 0};
        const int result = ::poll(&socket, 1, static_cast<int>(left));
        if (result >= 0 || errno != EINTR) return result > 0;
    }
}

void PacketStream::send(const std::string& body) const {
    const std::size_t size = kHeaderSize + body.size();
    std::string packet = {kPrelogin, kLastPacket, static_cast<char>(size >> 8), static_cast<char>(size)};
    packet.resize(kHeaderSize);  // process 0, packet number 0, window 0
    packet += body;
    std::size_t sent = 0;
    while (sent < packet.size() && isReady(POLLOUT)) {
        const ssize_t count = ::send(m_socket, packet.data() + sent, packet.size() - sent, MSG_NOSIGNAL);
        if (count > 0) sent += static_cast<std::size_t>(count);
        if (count < 0 && errno != EAGAIN && errno != EINTR)
            throw ProbeFailure("the server ends the connection: " + errorText(errno));
    }
}

std::string PacketStream::receive(const std::string& awaited) const {
    const std::string header = read(kHeaderSize, awaited);
    const auto byte = [&](std::size_t i) { return std::size_t{static_cast<unsigned char>(header[i])}; };
    const std::size_t size = byte(2) << 8 | byte(3);
    if ((header[0] != kReply && header[0] != kPrelogin) || size < kHeaderSize)
        throw ProbeFailure("the service at this port is not SQL Server");
    return read(size - kHeaderSize, awaited);
}

std::string PacketStream::read(std::size_t size, const std::string& awaited) const {
    std::string bytes(size, '\0');
    std::size_t got = 0;
    while (got < size) {
        if (!isReady(POLLIN)) throw ProbeFailure("the server does not send " + awaited + " in time");
        const ssize_t count = ::recv(m_socket, bytes.data() + got, size - got, 0);
        if (count == 0) throw ProbeFailure("the server ends the connection instead of sending " + awaited);
        if (count > 0) got += static_cast<std::size_t>(count);
        if (count < 0 && errno != EAGAIN && errno != EINTR)
            throw ProbeFailure("the server ends the connection instead of sending " + awaited + ": " +
                               errorText(errno));
    }
    return bytes;
}

}  // namespace hostlayer

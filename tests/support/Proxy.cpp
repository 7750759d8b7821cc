#include "Proxy.h"

#include <arpa/inet.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace support {
namespace {

constexpr int kPollMilliseconds = 50;  // until a stop is noticed

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

Descriptor tcpSocket() {
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (socket.get() < 0) throw std::system_error(errno, std::generic_category(), "socket");
    return socket;
}

bool isReadable(int fd) {
    pollfd readable{fd, POLLIN, 0};
    return poll(&readable, 1, kPollMilliseconds) == 1;
}

void resetAtClose(const Descriptor& connection) {
    constexpr linger kAtOnce{1, 0};
    setsockopt(connection.get(), SOL_SOCKET, SO_LINGER, &kAtOnce, sizeof kAtOnce);
}

// The kernel drops what arrives at the socket before it acknowledges it.
void dropPackets(const Descriptor& connection) {
    sock_filter dropAll = BPF_STMT(BPF_RET | BPF_K, 0);
    const sock_fprog program{1, &dropAll};
    if (setsockopt(connection.get(), SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) != 0)
        throw std::system_error(errno, std::generic_category(), "SO_ATTACH_FILTER");
}

void forge(const NetworkFault& fault, char* block, std::size_t size) {
    char* const end = block + size;
    for (char* at = block; (at = std::search(at, end, fault.original.begin(), fault.original.end())) != end;)
        at = std::copy(fault.forged.begin(), fault.forged.end(), at);
}

}  // namespace

Descriptor silentPort(const std::string& address, int port) {
    Descriptor listening = tcpSocket();
    sockaddr_in place = loopback(port);
    inet_pton(AF_INET, address.c_str(), &place.sin_addr);
    if (bind(listening.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0 ||
        listen(listening.get(), 1) != 0)
        throw std::system_error(errno, std::generic_category(), "listen");
    dropPackets(listening);
    return listening;
}

ListeningSocket::ListeningSocket() : descriptor(tcpSocket()) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(descriptor.get(), generic, size) != 0 || listen(descriptor.get(), SOMAXCONN) != 0 ||
        getsockname(descriptor.get(), generic, &size) != 0)
        throw std::system_error(errno, std::generic_category(), "listen");
    port = ntohs(address.sin_port);
}

Proxy::Proxy(int serverPort, NetworkFault fault) : m_serverPort(serverPort), m_fault(fault) {
    m_acceptor = std::thread(&Proxy::acceptClients, this);
}

Proxy::~Proxy() {
    m_stops = true;
    m_acceptor.join();
    for (std::thread& connection : m_connections) connection.join();
}

std::string Proxy::wire() const {
    const std::lock_guard lock(m_mutex);
    return m_wire;
}

NetworkFault Proxy::fault() const {
    const std::lock_guard lock(m_mutex);
    return m_fault;
}

void Proxy::setFault(NetworkFault fault) {
    const std::lock_guard lock(m_mutex);
    m_fault = fault;
}

void Proxy::acceptClients() {
    while (!m_stops)
        if (isReadable(m_listening.descriptor.get()))
            m_connections.emplace_back(
                [this, client = Descriptor(accept4(m_listening.descriptor.get(), nullptr, nullptr,
                                                   SOCK_CLOEXEC))] { forward(client); });
}

void Proxy::forward(const Descriptor& client) {
    const Descriptor server = tcpSocket();
    const sockaddr_in address = loopback(m_serverPort);
    if (connect(server.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return;
    std::size_t sentByServer = 0;
    const bool isFirst = ++m_accepted == 1;
    const int resets = m_resets;
    const int losses = m_losses;
    bool losesPackets = false;
    while (!m_stops) {
        const NetworkFault now = fault();
        if (m_losses != losses && !std::exchange(losesPackets, true)) dropPackets(client);
        const bool isDue = losesPackets || (now.kind != NetworkFault::kNone && sentByServer >= now.after &&
                                            (isFirst || !now.onlyFirst));
        if (m_resets != resets || (isDue && now.kind == NetworkFault::kReset)) return resetAtClose(client);
        if (isDue && now.kind == NetworkFault::kClose) return;
        pollfd ends[] = {{client.get(), POLLIN, 0}, {server.get(), POLLIN, 0}};
        poll(ends, isDue ? 0 : std::size(ends), kPollMilliseconds);
        for (const auto& [from, to, isServer] :
             {std::tuple(&ends[0], &ends[1], false), {&ends[1], &ends[0], true}}) {
            if (from->revents == 0) continue;
            char block[std::size_t{16} << 10];
            const ssize_t got = recv(from->fd, block, std::min(sizeof block, now.mostBytes), 0);
            if (got <= 0) return;
            const auto bytes = static_cast<std::size_t>(got);
            if (isServer) sentByServer += bytes;
            if (isServer && !now.original.empty()) forge(now, block, bytes);
            std::this_thread::sleep_for(now.delay);
            const std::lock_guard lock(m_mutex);
            m_wire.append(block, bytes);
            if (send(to->fd, block, bytes, MSG_NOSIGNAL) != got) return;
        }
    }
}

}  // namespace support

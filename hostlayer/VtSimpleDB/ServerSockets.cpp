#include "ServerSockets.h"

#include <fcntl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <optional>

namespace hostlayer {
namespace {

bool isOpenDescriptor(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

// Returns the inode of a descriptor that is a TCP socket.
std::optional<ino_t> tcpInode(int descriptor) {
    struct stat status {};
    int protocol = 0;
    socklen_t size = sizeof protocol;
    if (::fstat(descriptor, &status) != 0 || !S_ISSOCK(status.st_mode)) return std::nullopt;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_PROTOCOL, &protocol, &size) != 0) return std::nullopt;
    if (protocol != IPPROTO_TCP) return std::nullopt;
    return status.st_ino;
}

bool isConnected(const ServerSocket& socket) {
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    return ::getpeername(socket.descriptor, reinterpret_cast<sockaddr*>(&peer), &size) == 0;
}

}  // namespace

bool ServerSocket::isOpen() const {
    return tcpInode(descriptor) == inode;
}

bool ServerSocket::hasKeepAlive() const {
    int isOn = 0;
    socklen_t size = sizeof isOn;
    return isOpen() && ::getsockopt(descriptor, SOL_SOCKET, SO_KEEPALIVE, &isOn, &size) == 0 && isOn != 0;
}

// What has arrived already could be read after shutdown(): several megabytes of messages, for which the
// driver manager needs minutes.
void ServerSocket::shutDown() const {
    if (!isOpen() || ::shutdown(descriptor, SHUT_RDWR) != 0) return;
    std::array<char, 65536> dropped;
    while (isOpen() && ::recv(descriptor, dropped.data(), dropped.size(), MSG_DONTWAIT) > 0) {
    }
}

std::uint64_t ServerSocket::bytesReceived() const {
    tcp_info info{};
    socklen_t size = sizeof info;
    if (!isOpen() || ::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return 0;
    const bool isKnown = size >= offsetof(tcp_info, tcpi_bytes_received) + sizeof info.tcpi_bytes_received;
    return isKnown ? info.tcpi_bytes_received : 0;
}

NewSockets::NewSockets() {
    m_first = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (m_first < 0) return;
    ::close(m_first);
    for (int i = 0; i < kWindow; ++i) m_wasOpen[static_cast<std::size_t>(i)] = isOpenDescriptor(m_first + i);
}

std::vector<ServerSocket> NewSockets::findAll() const {
    std::vector<ServerSocket> found;
    for (int i = 0; m_first >= 0 && i < kWindow; ++i) {
        if (m_wasOpen[static_cast<std::size_t>(i)]) continue;
        if (const auto inode = tcpInode(m_first + i)) found.push_back({m_first + i, *inode});
    }
    return found;
}

std::vector<ServerSocket> NewSockets::findConnected() const {
    std::vector<ServerSocket> found = findAll();
    std::erase_if(found, [](const ServerSocket& socket) { return !isConnected(socket); });
    return found;
}

}  // namespace hostlayer

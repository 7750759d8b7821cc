#include "NetworkTimeout.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>

namespace hostlayer {
namespace {

constexpr std::chrono::seconds kMostIdle{40};  // FreeTDS's, which firewalls that forget connections know

}  // namespace

// The kernel ends the connection at the time limit if a keep-alive packet has been sent by then.
void setNetworkTimeout(int socket, std::chrono::seconds timeout) {
    constexpr std::chrono::hours kMost{24};
    if (timeout <= std::chrono::seconds::zero()) return;
    timeout = std::min<std::chrono::seconds>(timeout, kMost);
    const auto seconds = static_cast<int>(timeout.count());
    const unsigned int milliseconds = static_cast<unsigned int>(seconds) * 1000U;
    const int on = 1;
    const int idle = std::clamp(seconds * 2 / 3, 1, static_cast<int>(kMostIdle.count()));
    ::setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &milliseconds, sizeof milliseconds);
    ::setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    ::setsockopt(socket, IPPROTO_TCP, TCP_KEEPIDLE, &idle, sizeof idle);
}

}  // namespace hostlayer

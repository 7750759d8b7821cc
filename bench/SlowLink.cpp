#include "SlowLink.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <deque>
#include <list>
#include <vector>

#include "Bench.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int newSocket() {
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    check(descriptor >= 0, "a socket cannot be created");
    return descriptor;
}

void sendAtOnce(int descriptor) {
    const int on = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

// What one side has sent and the other has not yet received.
struct Delayed {
    Clock::time_point due;
    std::string bytes;  // empty: the end
};

struct Direction {
    int from;
    int to;
    std::deque<Delayed> waiting;
    bool hasEnded = false;  // `from` sends nothing more
    bool isDone = false;    // `to` has received the end
};

struct Connection {
    Direction request;
    Direction answer;
    bool clientSpokeLast = false;
};

// Reads what has arrived. Returns whether there were bytes.
bool receive(Direction& direction, Clock::time_point due) {
    std::array<char, 65536> buffer;
    const ssize_t size = ::recv(direction.from, buffer.data(), buffer.size(), 0);
    direction.hasEnded = size <= 0;
    direction.waiting.push_back(
        {due, size > 0 ? std::string(buffer.data(), static_cast<std::size_t>(size)) : ""});
    return size > 0;
}

void sendDue(Direction& direction, Clock::time_point now) {
    for (; !direction.waiting.empty() && direction.waiting.front().due <= now;
         direction.waiting.pop_front()) {
        const std::string& bytes = direction.waiting.front().bytes;
        for (std::size_t sent = 0; sent < bytes.size();) {
            const ssize_t size = ::send(direction.to, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (size <= 0) break;
            sent += static_cast<std::size_t>(size);
        }
        if (!bytes.empty()) continue;
        ::shutdown(direction.to, SHUT_WR);
        direction.isDone = true;
    }
}

timespec timeUntil(Clock::time_point due) {
    const auto left = std::max(due - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    return {seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
}

}  // namespace

SlowLink::SlowLink(int serverPort, std::chrono::microseconds roundTrip)
    : m_serverPort(serverPort),
      m_delay(roundTrip / 2),
      m_listener(newSocket()),
      m_wake(::eventfd(0, EFD_CLOEXEC)) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    auto* const bytes = reinterpret_cast<sockaddr*>(&address);
    check(::bind(m_listener, bytes, size) == 0 && ::listen(m_listener, SOMAXCONN) == 0 &&
              ::getsockname(m_listener, bytes, &size) == 0,
          "the slow link cannot listen");
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { serve(); });
}

SlowLink::~SlowLink() {
    ::eventfd_write(m_wake, 1);
    m_thread.join();
    ::close(m_wake);
    ::close(m_listener);
}

void SlowLink::serve() {
    std::list<Connection> connections;
    const auto accept = [&] {
        const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        const int server = newSocket();
        const sockaddr_in address = loopback(m_serverPort);
        if (client < 0 ||
            ::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
            if (client >= 0) ::close(client);  // the client sees a connection that is lost
            ::close(server);
            return;
        }
        sendAtOnce(client);
        sendAtOnce(server);
        connections.push_back({{client, server, {}}, {server, client, {}}});
        ++m_connections;
    };
    const auto forward = [&](Connection& connection, bool requestArrives, bool answerArrives) {
        const auto due = Clock::now() + m_delay;
        if (requestArrives && receive(connection.request, due) && !connection.clientSpokeLast) {
            connection.clientSpokeLast = true;
            ++m_roundTrips;
        }
        if (answerArrives && receive(connection.answer, due)) connection.clientSpokeLast = false;
        const auto now = Clock::now();
        sendDue(connection.request, now);
        sendDue(connection.answer, now);
    };
    const auto close = [](const Connection& connection) {
        ::close(connection.request.from);
        ::close(connection.request.to);
    };

    for (;;) {
        auto next = Clock::now() + std::chrono::seconds(1);
        std::vector<pollfd> events{{m_wake, POLLIN, 0}, {m_listener, POLLIN, 0}};
        for (const Connection& connection : connections)
            for (const Direction* direction : {&connection.request, &connection.answer}) {
                events.push_back({direction->hasEnded ? -1 : direction->from, POLLIN, 0});
                if (!direction->waiting.empty()) next = std::min(next, direction->waiting.front().due);
            }
        const timespec wait = timeUntil(next);
        ::ppoll(events.data(), events.size(), &wait, nullptr);
        if (events[0].revents != 0) break;
        std::size_t event = 2;
        for (auto at = connections.begin(); at != connections.end(); event += 2) {
            forward(*at, events[event].revents != 0, events[event + 1].revents != 0);
            const bool isOver = at->request.isDone && at->answer.isDone;
            if (isOver) close(*at);
            at = isOver ? connections.erase(at) : std::next(at);
        }
        if (events[1].revents != 0) accept();
    }
    for (const Connection& connection : connections) close(connection);
}

}  // namespace bench

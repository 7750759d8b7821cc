#include "Listener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>

#include <cstdio>
#include <thread>

#include "SessionLimits.h"
#include "functions/FunctionSession.h"

namespace server {
namespace {

// SQL Server reserves the lower numbers for system sessions.
constexpr int kFirstSessionId = 51;
constexpr std::chrono::milliseconds kPauseWithoutDescriptors{50};

[[noreturn]] void throwErrno(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

FileDescriptor openListening(const Options& options) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(options.port);
    const std::string listen = "--listen " + options.listenAddress;
    if (inet_pton(AF_INET, options.listenAddress.c_str(), &address.sin_addr) != 1)
        throw std::runtime_error(listen + " is not an IPv4 address");
    if (!options.allowRemote && !options.listenAddress.starts_with("127."))
        throw std::runtime_error(listen + " can be reached from other hosts; this needs --allow-remote");
    auto socket = FileDescriptor::adopt(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen()) throwErrno("socket");
    const int on = 1;
    setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), SOMAXCONN) != 0)
        throwErrno("cannot listen on " + options.listenAddress + ":" + std::to_string(options.port));
    return socket;
}

const sigset_t kStopSignals = [] {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}();

}  // namespace

void blockStopSignals() {
    pthread_sigmask(SIG_BLOCK, &kStopSignals, nullptr);
    signal(SIGXFSZ, SIG_IGN);  // a file at the limit of its size is an error of the statement
}

Listener::Listener(const Options& options, const tds::Credentials& credentials, tsql::Engine& engine)
    : m_options(options),
      m_settings{engine,
                 credentials,
                 tsql::hostName(),
                 options.encryption.value(),
                 options.encryption == tds::Encryption::None
                     ? nullptr
                     : openTls(options.tlsFiles, options.selfSignedNames, options.newestTls),
                 options.keytab.empty() ? nullptr : tds::openKeytab(options.keytab),
                 std::chrono::seconds(options.loginSeconds)},
      m_socket(openListening(options)),
      m_signals(FileDescriptor::adopt(signalfd(-1, &kStopSignals, SFD_CLOEXEC))) {
    if (!m_signals.isOpen()) throwErrno("signalfd");
}

Listener::~Listener() {
    std::unique_lock lock(m_mutex);
    for (const auto& [id, client] : m_clients) shutdown(client.socket.get(), SHUT_RDWR);
    m_sessionEnded.wait(lock, [this] { return m_clients.empty(); });
}

std::string Listener::address() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (getsockname(m_socket.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throwErrno("getsockname");
    return m_options.listenAddress + ":" + std::to_string(ntohs(address.sin_port));
}

void Listener::run() {
    pollfd events[] = {{m_socket.get(), POLLIN, 0},
                       {m_signals.get(), POLLIN, 0},
                       {m_options.stopAtEndOfInput ? STDIN_FILENO : -1, POLLIN, 0}};
    const auto& [client, signal, input] = events;
    for (;;) {
        const int ready = poll(events, std::size(events), -1);
        if (ready < 0 && errno != EINTR) throwErrno("poll");
        if (ready <= 0) continue;
        char ignored[256];
        const bool inputEnds = input.revents != 0 && read(STDIN_FILENO, ignored, sizeof ignored) == 0;
        if (signal.revents != 0 || inputEnds) return;
        if (client.revents != 0) acceptClient();
    }
}

void Listener::acceptClient() {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    auto socket = FileDescriptor::adopt(
        accept4(m_socket.get(), reinterpret_cast<sockaddr*>(&address), &size, SOCK_CLOEXEC));
    if (!socket.isOpen()) {
        const bool noDescriptors = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
        if (noDescriptors) std::this_thread::sleep_for(kPauseWithoutDescriptors);
        return;
    }
    const int on = 1;
    setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(socket.get(), SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);  // detects hosts that have vanished
    startSession(std::move(socket), address.sin_addr.s_addr);
}

// Returns whether another client may be served. If all places are taken, the client that has kept its login
// back for the longest is dropped, among those of the address that has the most of them.
bool Listener::makePlace() {
    const auto served = std::ranges::count_if(
        m_clients, [](const auto& each) { return each.second.state != State::Dropped; });
    if (served < m_options.maxConnections) return true;
    std::map<std::uint32_t, int> silent;
    for (const auto& [id, client] : m_clients) silent[client.address] += client.state == State::AwaitsLogin;
    const auto rank = [&](const auto& each) {
        const Client& client = each.second;
        return std::tuple(client.state != State::AwaitsLogin, -silent[client.address], client.arrival);
    };
    Client& oldest = std::ranges::min_element(m_clients, {}, rank)->second;
    if (oldest.state != State::AwaitsLogin) return false;
    oldest.state = State::Dropped;
    shutdown(oldest.socket.get(), SHUT_RDWR);
    return true;
}

void Listener::startSession(FileDescriptor socket, std::uint32_t address) {
    const std::lock_guard lock(m_mutex);
    if (!makePlace()) {
        std::fprintf(stderr, "connection refused: %d clients are connected already\n",
                     m_options.maxConnections);
        return;
    }
    int id = kFirstSessionId;
    while (m_clients.contains(id)) ++id;
    const auto place = m_clients.emplace(id, Client{std::move(socket), address}).first;
    try {
        std::thread(&Listener::serve, this, place->second.socket.get(), id).detach();
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "connection refused: %s\n", error.what());
        m_clients.erase(place);
    }
}

void Listener::serve(int client, int sessionId) {
    limitThread(m_options.sessionMebibytes << 20, m_options.temporaryMebibytes << 20);
    const auto noteLogin = [&] {
        const std::lock_guard lock(m_mutex);
        State& state = m_clients.at(sessionId).state;
        if (state == State::AwaitsLogin) state = State::Served;
    };
    tds::ClientConnection(client, sessionId, m_settings, noteLogin).run();
    const std::lock_guard lock(m_mutex);
    m_clients.erase(sessionId);
    m_sessionEnded.notify_all();
}

}  // namespace server

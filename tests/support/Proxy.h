// TCP proxy on loopback that keeps what it forwards, so that a test can read the wire, and that misbehaves as
// networks do.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Program.h"

namespace support {

// What a proxy does to its connections.
struct NetworkFault {
    enum Kind { kNone, kClose, kReset, kSilence };
    Kind kind = kNone;
    bool onlyFirst = false;                         // of the connections; kClose and kReset only
    std::size_t after = 0;                          // bytes that the server has sent on a connection before
    std::chrono::milliseconds delay{0};             // of everything that is forwarded
    std::size_t mostBytes = std::size_t{16} << 10;  // that are forwarded at a time
    std::string original{}, forged{};               // in what the server sends, of the same length
};

// A socket that listens on a free port of 127.0.0.1. Nobody accepts the connections that it gets.
struct ListeningSocket {
    ListeningSocket();
    std::string server() const { return "127.0.0.1," + std::to_string(port); }

    Descriptor descriptor;
    int port = 0;
};

// A port of a loopback address that drops every packet.
Descriptor silentPort(const std::string& address, int port);

class Proxy {
  public:
    // Forwards each connection to a port of 127.0.0.1.
    explicit Proxy(int serverPort, NetworkFault fault = {});
    ~Proxy();
    Proxy(const Proxy&) = delete;
    Proxy& operator=(const Proxy&) = delete;

    int port() const { return m_listening.port; }
    void setFault(NetworkFault fault);       // of open and of new connections
    void resetConnections() { ++m_resets; }  // those that are open
    // From now on, all packets of the open connections get lost, in both directions, without a word.
    void losePackets() { ++m_losses; }
    std::string wire() const;  // bytes of both directions and all connections so far

  private:
    void acceptClients();
    void forward(const Descriptor& client);
    NetworkFault fault() const;

    int m_serverPort;
    ListeningSocket m_listening;
    std::atomic<bool> m_stops = false;
    std::atomic<int> m_resets = 0;
    std::atomic<int> m_losses = 0;
    std::atomic<int> m_accepted = 0;
    mutable std::mutex m_mutex;
    NetworkFault m_fault;
    std::string m_wire;
    std::vector<std::thread> m_connections;
    std::thread m_acceptor;
};

}  // namespace support

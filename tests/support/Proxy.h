// TCP proxy on loopback that keeps what it forwards, so that a test can read the wire.
#pragma once

#include <atomic>
#include <cstddef>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Program.h"

namespace support {

class Proxy {
  public:
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

    // Forwards each connection to a port of 127.0.0.1. Closes it once the server has sent `cutAfter` bytes.
    explicit Proxy(int serverPort, std::size_t cutAfter = kNever);
    ~Proxy();
    Proxy(const Proxy&) = delete;
    Proxy& operator=(const Proxy&) = delete;

    int port() const { return m_port; }
    std::string wire() const;  // bytes of both directions and all connections so far

  private:
    void acceptClients();
    void forward(const Descriptor& client);

    int m_serverPort;
    std::size_t m_cutAfter;
    int m_port = 0;
    Descriptor m_listening;
    std::atomic<bool> m_stops = false;
    mutable std::mutex m_mutex;
    std::string m_wire;
    std::vector<std::thread> m_connections;
    std::thread m_acceptor;
};

}  // namespace support

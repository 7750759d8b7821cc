// Link to a server with a given delay, which counts what crosses it.
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

namespace bench {

// Listens on a port of 127.0.0.1 and forwards to another one. What a side sends arrives after half of
// `roundTrip`. One thread serves all connections.
class SlowLink {
  public:
    SlowLink(int serverPort, std::chrono::microseconds roundTrip);
    ~SlowLink();  // ends all connections
    SlowLink(const SlowLink&) = delete;
    SlowLink& operator=(const SlowLink&) = delete;

    int port() const { return m_port; }
    std::string server() const { return "127.0.0.1," + std::to_string(m_port); }

    // Counts since the last reset().
    int connections() const { return m_connections; }
    int roundTrips() const { return m_roundTrips; }  // requests that follow an answer, or begin a connection
    void reset() { m_connections = m_roundTrips = 0; }

  private:
    void serve();

    int m_serverPort;
    std::chrono::microseconds m_delay;
    int m_listener = -1;
    int m_wake = -1;  // eventfd: the thread ends
    int m_port = 0;
    std::atomic<int> m_connections = 0;
    std::atomic<int> m_roundTrips = 0;
    std::thread m_thread;
};

}  // namespace bench

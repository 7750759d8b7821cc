// TDS packets over TCP, with one deadline for everything: [MS-TDS] 2.2.3.
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace hostlayer {

// Why the probe ends. what() is a clause about the server: "127.0.0.1 port 1: Connection refused".
struct ProbeFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class PacketStream {
  public:
    using Clock = std::chrono::steady_clock;

    // Connects to the first of the host's addresses that accepts. The deadline is `limit` after the host's
    // name has been resolved. Throws ProbeFailure with the reason of each address.
    PacketStream(const std::string& host, const std::string& port, std::chrono::milliseconds limit);
    ~PacketStream();
    PacketStream(const PacketStream&) = delete;
    PacketStream& operator=(const PacketStream&) = delete;

    // Sends one PRELOGIN packet. Throws ProbeFailure.
    void send(const std::string& body) const;

    // Returns the body of the next packet. Throws ProbeFailure, which says what was `awaited`, if the server
    // ends the connection, does not answer in time, or does not answer with a packet.
    std::string receive(const std::string& awaited) const;

    bool isLoopback() const { return m_isLoopback; }

  private:
    struct Address;
    std::string connectTo(const Address& address);
    std::string read(std::size_t size, const std::string& awaited) const;
    bool isReady(short event) const;

    Clock::time_point m_deadline;
    int m_socket = -1;
    bool m_isLoopback = false;
};

}  // namespace hostlayer

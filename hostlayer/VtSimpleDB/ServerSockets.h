// Sockets of connections to servers. ODBC does not return them.
#pragma once

#include <sys/types.h>

#include <bitset>
#include <cstdint>
#include <vector>

namespace hostlayer {

// Socket of a connection: its descriptor, and its inode to recognise it.
struct ServerSocket {
    int descriptor = -1;
    ino_t inode = 0;

    // False if the descriptor is another file by now.
    bool isOpen() const;
    // Drivers ask for keep-alive packets; few other sockets of a program have them.
    bool hasKeepAlive() const;
    // Ends the connection in both directions; a thread that waits for the server continues with an error.
    void shutDown() const;
    // Bytes received from the server since the connection was made; 0 if the system does not say.
    std::uint64_t bytesReceived() const;
};

// Finds the socket that a driver opens after the construction of this object. A new descriptor is always the
// lowest free one, so few have to be looked at. Other threads' sockets of the same moment are found too.
class NewSockets {
  public:
    NewSockets();

    std::vector<ServerSocket> findConnected() const;
    // Also a socket whose connection is not made yet.
    std::vector<ServerSocket> findAll() const;

  private:
    static constexpr int kWindow = 64;

    int m_first = -1;
    std::bitset<kWindow> m_wasOpen;
};

}  // namespace hostlayer

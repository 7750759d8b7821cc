// Time after which a connection ends whose packets get lost.
#pragma once

#include <chrono>

namespace hostlayer {

// Ends the connection of a TCP socket when the server's host has not acknowledged data, or answered the
// kernel's keep-alive packets, for this time. The server itself may be silent for longer. 0: the kernel's
// limits, about 15 minutes for data. Failures are ignored.
void setNetworkTimeout(int socket, std::chrono::seconds timeout);

}  // namespace hostlayer

// Owns a socket or another descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace server {

class Socket {
  public:
    explicit Socket(int fd = -1) : m_fd(fd) {}
    ~Socket() {
        if (m_fd >= 0) close(m_fd);
    }
    Socket(Socket&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Socket& operator=(Socket&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    int get() const { return m_fd; }

  private:
    int m_fd;
};

}  // namespace server

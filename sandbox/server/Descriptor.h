// Owner of a file descriptor, such as a socket. Move-only; -1 owns nothing.
#pragma once

#include <unistd.h>

#include <utility>

namespace server {

class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() {
        if (m_fd >= 0) close(m_fd);
    }
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    int get() const { return m_fd; }

  private:
    int m_fd;
};

}  // namespace server

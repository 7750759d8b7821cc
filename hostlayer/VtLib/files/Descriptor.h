// Move-only owner of a file descriptor; -1 is empty.
#pragma once

#include <unistd.h>

#include <utility>

namespace hostlayer {

class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~Descriptor() { reset(); }

    explicit operator bool() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }
    void reset() {
        if (m_descriptor >= 0) ::close(std::exchange(m_descriptor, -1));
    }

  private:
    int m_descriptor = -1;
};

}  // namespace hostlayer

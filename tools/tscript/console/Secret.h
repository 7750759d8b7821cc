// A string that is wiped when it is destroyed.
#pragma once

#include <string.h>

#include <string>
#include <utility>

class Secret {
  public:
    // Allocates once, because growing would leave copies of the secret in freed memory.
    explicit Secret(std::size_t capacity) { m_text.reserve(capacity); }
    ~Secret() { explicit_bzero(m_text.data(), m_text.capacity()); }
    Secret(Secret&& other) noexcept : m_text(std::move(other.m_text)) { other.wipe(); }
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;

    std::string& text() { return m_text; }
    const std::string& text() const { return m_text; }

  private:
    void wipe() {
        m_text.resize(m_text.capacity());
        explicit_bzero(m_text.data(), m_text.size());
        m_text.clear();
    }
    std::string m_text;
};

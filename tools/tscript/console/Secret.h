// A text that is wiped when it is no longer needed.
#pragma once

#include <string.h>

#include <string>
#include <utility>

class Secret {
  public:
    // The room is taken at once, so that no copy of the text is left behind by growing.
    explicit Secret(std::size_t room) { m_text.reserve(room); }
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

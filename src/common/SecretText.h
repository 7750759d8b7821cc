// Texts that must not stay behind in memory: passwords, deciphered credentials, command lines that carry
// them.
#pragma once

#include <cstring>
#include <string>
#include <utility>

// Overwrites the text, unused capacity included, and empties it.
inline void wipe(std::string& text) noexcept {
    text.resize(text.capacity());  // no reallocation: cannot throw
    explicit_bzero(text.data(), text.size());
    text.clear();
}

// Owns a secret and wipes it at the end.
class SecretText {
  public:
    explicit SecretText(std::string text) : m_text(std::move(text)) {}
    ~SecretText() { wipe(m_text); }
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;

    const char* c_str() const { return m_text.c_str(); }
    const std::string& text() const { return m_text; }

  private:
    std::string m_text;
};

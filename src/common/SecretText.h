// Strings that are wiped from memory after use: passwords, decrypted credentials, command lines with
// passwords.
#pragma once

#include <cstring>
#include <string>
#include <utility>

// Overwrites the string, unused capacity included, and clears it.
inline void wipe(std::string& text) noexcept {
    text.resize(text.capacity());  // no reallocation: cannot throw
    explicit_bzero(text.data(), text.size());
    text.clear();
}

// Owner of a secret; wipes it when it is destroyed.
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

// Login name and password of a server, which has exactly one login.
#pragma once

#include <string>
#include <string_view>

namespace tds {

class Credentials {
  public:
    // Keeps a hash of the password, keyed with random bytes. Throws std::runtime_error if libsodium cannot be
    // used.
    Credentials(std::string_view name, std::string_view password);

    // Compares the name without regard to case and the password exactly. A wrong name takes as long as a
    // wrong password. Thread-safe.
    bool match(std::string_view name, std::string_view password) const;

  private:
    using Bytes = std::basic_string<unsigned char>;
    std::string m_name;
    Bytes m_key, m_hash;
};

}  // namespace tds

// Login name and password of a server, which has exactly one login.
#pragma once

#include <string>
#include <string_view>

namespace tds {

class Credentials {
  public:
    // Keeps a salted hash of the password. Throws std::runtime_error if libsodium cannot be used.
    Credentials(std::string_view name, std::string_view password);

    // Compares the name without regard to case and the password exactly. A wrong name takes as long as a
    // wrong password. Thread-safe.
    bool match(std::string_view name, std::string_view password) const;

  private:
    std::string m_name, m_hash;
};

}  // namespace tds

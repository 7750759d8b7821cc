// Login name and password of a server, which has exactly one login.
#pragma once

#include <semaphore>
#include <string>
#include <string_view>

namespace tds {

class Credentials {
  public:
    // Keeps a salted hash of the password. Throws std::runtime_error when there is no memory for hashing.
    Credentials(std::string_view name, std::string_view password);

    // Compares the name without regard to case and the password exactly. A wrong name takes as long as a
    // wrong password. Thread-safe.
    bool match(std::string_view name, std::string_view password) const;

  private:
    std::string m_name;
    std::string m_hash;
    // Hashing is expensive. The limit keeps a flood of logins from taking all memory and processors.
    mutable std::counting_semaphore<> m_hashSlots{2};
};

}  // namespace tds

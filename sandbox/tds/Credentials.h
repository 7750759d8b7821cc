// The one login of a server.
#pragma once

#include <semaphore>
#include <string>
#include <string_view>

namespace tds {

class Credentials {
  public:
    // The password is kept as a salted hash. Throws std::runtime_error when there is no memory for it.
    Credentials(std::string_view name, std::string_view password);

    // The name counts in any case. The same work for another name as for a wrong password. Safe under
    // threads.
    bool match(std::string_view name, std::string_view password) const;

  private:
    std::string m_name;
    std::string m_hash;
    // Each takes its share of memory and of a processor: in a flood of logins the others wait for their turn.
    mutable std::counting_semaphore<> m_turns{2};
};

}  // namespace tds

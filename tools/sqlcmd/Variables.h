// Scripting variables: $(name).
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace sqlcmd {

// Names compare without regard to case. A variable that was set (-v, :setvar) hides the environment's.
class Variables {
  public:
    void set(std::string_view name, std::string_view value);
    void remove(std::string_view name);
    // The password's variable is never readable.
    std::optional<std::string> find(std::string_view name) const;

    static bool isName(std::string_view name);

  private:
    std::map<std::string, std::string> m_values;  // by the name in lower case
};

}  // namespace sqlcmd

// Scripting variables, $(name) in a script.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace sqlcmd {

// Names are not case-sensitive. A variable set with -v or :setvar takes precedence over the environment's.
class Variables {
  public:
    void set(std::string_view name, std::string_view value);
    void remove(std::string_view name);
    void hideEnvironment() { m_readsEnvironment = false; }
    // Returns nullopt for an undefined variable and for the password's, SQLCMDPASSWORD.
    std::optional<std::string> find(std::string_view name) const;

    const std::map<std::string, std::string>& all() const { return m_values; }

    // True for letters, digits, '_', '-' and '.'.
    static bool isName(std::string_view name);

  private:
    bool m_readsEnvironment = true;
    std::map<std::string, std::string> m_values;  // by the name in lower case
};

}  // namespace sqlcmd

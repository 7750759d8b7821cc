#include "options/Variables.h"

#include <algorithm>
#include <cstdlib>

#include "text/Text.h"

namespace sqlcmd {

void Variables::set(std::string_view name, std::string_view value) {
    m_values.insert_or_assign(lowerCase(name), value);
}

void Variables::remove(std::string_view name) {
    m_values.erase(lowerCase(name));
}

std::optional<std::string> Variables::find(std::string_view name) const {
    if (equalsIgnoringCase(name, "SQLCMDPASSWORD")) return std::nullopt;
    if (const auto found = m_values.find(lowerCase(name)); found != m_values.end()) return found->second;
    if (!m_readsEnvironment) return std::nullopt;
    if (const char* value = std::getenv(std::string(name).c_str())) return value;
    return std::nullopt;
}

bool Variables::isName(std::string_view name) {
    const auto allowed = [](unsigned char c) {
        return isWordCharacter(static_cast<char>(c)) || c == '-' || c == '.';
    };
    return !name.empty() && std::all_of(name.begin(), name.end(), allowed);
}

}  // namespace sqlcmd

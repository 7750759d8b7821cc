// Names and texts as SQLite's SQL quotes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "types/Text.h"

namespace tsql {

inline std::string quotedWith(std::string_view text, char quote) {
    std::string out(1, quote);
    for (std::size_t at; (at = text.find(quote)) != std::string_view::npos; text.remove_prefix(at + 1))
        out.append(text.substr(0, at + 1)) += quote;
    return out.append(text) += quote;
}
// "a""b"
inline std::string quotedName(std::string_view name) {
    return quotedWith(name, '"');
}
// 'a''b'
inline std::string quotedText(std::string_view text) {
    return quotedWith(text, '\'');
}
// prefix"a", prefix"b"
inline std::string quotedNames(const std::vector<std::string>& names, std::string_view prefix = {}) {
    return commaList(names, [&](const auto& name) { return std::string(prefix) + quotedName(name); });
}

}  // namespace tsql

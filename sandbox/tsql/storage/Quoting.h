// Names and texts as SQLite's SQL quotes them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tsql {

std::string quotedName(std::string_view name);  // "a""b"
// prefix"a", prefix"b"
std::string quotedNames(const std::vector<std::string>& names, std::string_view prefix = {});
std::string quotedText(std::string_view text);  // 'a''b'

}  // namespace tsql

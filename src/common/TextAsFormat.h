// Interpretation of strings as format strings.
//
// Several values (configuration values, machine names, columns of a row, ...) are formatted before they are
// used, and callers rely on the effect on percent signs: "%%" becomes "%", "%s" is replaced by the next
// argument, and everything else, "%s" without an argument included, stays unchanged. Unlike printf(), this
// never reads a missing argument and never writes to one.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

// Interprets without arguments and cuts the result to `maxLength` characters (without the NUL).
std::string textAsFormat(std::string_view text, std::size_t maxLength = std::string::npos);
std::wstring textAsFormat(std::wstring_view text, std::size_t maxLength = std::wstring::npos);

// Interprets with arguments for "%s".
std::string textAsFormat(std::string_view text, std::initializer_list<std::string_view> arguments);

// Texts that are, on purpose, interpreted as format strings.
//
// Several values (configuration texts, machine names, columns of a row, ...) pass through a formatting step
// before they are used, and callers rely on what it does to a percent sign. Unlike printf this step can never
// read an argument that is not there and never writes anywhere: "%%" becomes "%", "%s" takes the next of the
// given arguments, and anything else, "%s" without an argument included, stays as it stands.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

// The interpreted text, cut to `maxLength` characters (no NUL counted).
std::string textAsFormat(std::string_view text, std::size_t maxLength = std::string::npos);
std::wstring textAsFormat(std::wstring_view text, std::size_t maxLength = std::wstring::npos);

// The interpreted text with arguments for its "%s".
std::string textAsFormat(std::string_view text, std::initializer_list<std::string_view> arguments);

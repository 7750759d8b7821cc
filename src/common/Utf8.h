// Decoding of UTF-8 (RFC 3629).
#pragma once

#include <string>
#include <string_view>

// Decodes the first character of a string that is not empty, and removes it. If it is invalid: false, and one
// byte is removed.
bool decodeUtf8(std::string_view& text, char32_t& character);

// Replaces each byte that is not part of a character by U+FFFD. Valid text takes no memory.
void repairUtf8(std::string& text);

// Strings from callers and buffers of callers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

// Returns the string, or an empty one for null.
inline const char* textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

// Copies at most `size` - 1 characters and a NUL. The cut may be inside a UTF-8 character. Does nothing for a
// null buffer or size 0.
template <typename Char>
void copyCut(Char* buffer, std::size_t size, std::basic_string_view<Char> text) {
    if (buffer == nullptr || size == 0) return;
    const std::size_t length = std::min(text.size(), size - 1);
    std::copy_n(text.data(), length, buffer);
    buffer[length] = Char();
}
inline void copyCut(char* buffer, std::size_t size, std::string_view text) {
    copyCut<char>(buffer, size, text);
}

// Copies the whole string with its NUL. The buffer must be large enough; a null buffer is ignored.
template <typename Char>
void copyWhole(Char* buffer, const std::basic_string<Char>& text) {
    copyCut<Char>(buffer, text.size() + 1, text);
}

// Returns the first `maxLength` bytes.
inline std::string cutTo(std::string_view text, std::size_t maxLength) {
    return std::string(text.substr(0, maxLength));
}

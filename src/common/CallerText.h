// Texts that come from callers and buffers that callers own.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

// A null text counts as the empty one.
inline const char* textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

// Copies what fits into `size` bytes (characters), NUL included; the rest is cut off, between two bytes of a
// UTF-8 character if need be. A null buffer or one without room takes nothing.
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

// Copies the whole text with its NUL into a buffer that the caller promised to be large enough. A null buffer
// takes nothing.
template <typename Char>
void copyWhole(Char* buffer, const std::basic_string<Char>& text) {
    copyCut<Char>(buffer, text.size() + 1, text);
}

// The text cut to `maxLength` bytes, as the fixed buffers of names and commands cut it.
inline std::string cutTo(std::string_view text, std::size_t maxLength) {
    return std::string(text.substr(0, maxLength));
}

// Text that grows at its end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace sqlcmd {

// std::string for the values of rows. A row is made of many short pieces: here, appending one is inlined, and
// most copies have a fixed size.
class TextBuffer {
  public:
    std::size_t size() const { return m_size; }
    const char* data() const { return m_bytes.get(); }
    char* data() { return m_bytes.get(); }
    // The text from an offset on; valid until the text changes.
    std::string_view from(std::size_t offset) const { return {data() + offset, m_size - offset}; }
    std::string_view view() const { return from(0); }

    void clear() { m_size = 0; }
    void truncate(std::size_t size) { m_size = size; }  // at most size()

    void append(std::string_view text) { std::copy_n(text.data(), text.size(), extend(text.size())); }
    void append(char c) { *extend(1) = c; }
    void appendBlanks(std::size_t count) { fill(extend(count), count); }

    // Appends what `write` writes: it gets the place of `most` bytes and returns the end of the text.
    template <typename Write>
    void appendWritten(std::size_t most, Write&& write) {
        char* target = extend(most);
        m_size = static_cast<std::size_t>(write(target) - data());
    }

    // Removes a character.
    void erase(std::size_t offset) {
        std::copy(data() + offset + 1, data() + m_size, data() + offset);
        --m_size;
    }
    // Moves the text from `offset` on to the right, behind blanks.
    void insertBlanks(std::size_t offset, std::size_t count) {
        const std::size_t moved = m_size - offset;
        extend(count);
        char* target = data() + offset;
        if (moved <= kBlock) {
            char text[kBlock];
            std::memcpy(text, target, kBlock);
            fill(target, count);
            std::memcpy(target + count, text, kBlock);
        } else {
            std::memmove(target + count, target, moved);
            std::fill_n(target, count, ' ');
        }
    }

  private:
    static constexpr std::size_t kBlock = 16;  // bytes behind the text that may be overwritten

    // Adds bytes, whose content is undefined, and returns the first.
    char* extend(std::size_t count) {
        if (m_capacity - m_size < count + kBlock) [[unlikely]]
            grow(count);
        char* added = data() + m_size;
        m_size += count;
        return added;
    }
    void grow(std::size_t count) {
        m_capacity = 2 * m_capacity + count + kBlock;
        auto bytes = std::make_unique_for_overwrite<char[]>(m_capacity);
        std::copy_n(data(), m_size, bytes.get());
        m_bytes = std::move(bytes);
    }
    static void fill(char* target, std::size_t count) {
        for (std::size_t done = 0; done < count; done += kBlock) std::memset(target + done, ' ', kBlock);
    }

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace sqlcmd

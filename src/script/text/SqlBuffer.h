// Buffer for SQL text of limited length.
#pragma once

#include <cstddef>
#include <memory>

// Text that does not fit is cut at the buffer's end. Callers rely on the limits.
class SqlBuffer {
  public:
    static constexpr std::size_t kPlain = 8192;  // for statements without user text
    static constexpr std::size_t kSpare = 1024;  // in addition to user text

    // `size` in bytes with the NUL. Check available(): the memory may be missing.
    explicit SqlBuffer(std::size_t size);

    bool available() const { return m_text != nullptr; }
    // False if the text is cut.
    bool format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    char* text() { return m_text.get(); }
    const char* text() const { return m_text.get(); }

  private:
    std::size_t m_size;
    std::unique_ptr<char[]> m_text;
};

#include "text/SqlBuffer.h"

#include <cstdarg>
#include <cstdio>
#include <new>

SqlBuffer::SqlBuffer(std::size_t size) : m_size(size), m_text(new (std::nothrow) char[size]) {
    if (available()) m_text[0] = '\0';
}

bool SqlBuffer::format(const char* format, ...) {
    va_list values;
    va_start(values, format);
    // va_start() has initialised it. NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const int length = std::vsnprintf(m_text.get(), m_size, format, values);
    va_end(values);
    return length >= 0 && static_cast<std::size_t>(length) < m_size;
}

// Bounds-checked reader of little-endian wire data.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tds {

using Bytes = std::string;
using ByteView = std::string_view;

// A message that violates the protocol. The connection is closed.
struct ProtocolError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Reads a message from its start to its end. Non-owning. Every read past the end throws ProtocolError.
class ByteReader {
  public:
    explicit ByteReader(ByteView data) : m_data(data) {}

    std::size_t remaining() const { return m_data.size() - m_position; }
    bool atEnd() const { return remaining() == 0; }

    ByteView bytes(std::size_t count) {
        const ByteView part = at(m_position, count);
        m_position += count;
        return part;
    }
    void skip(std::size_t count) { bytes(count); }
    // `count` bytes at `offset` from the start of the message. The read position does not change.
    ByteView at(std::size_t offset, std::size_t count) const {
        if (offset > m_data.size() || count > m_data.size() - offset)
            throw ProtocolError("a length or offset points outside the message");
        return m_data.substr(offset, count);
    }

    // Unsigned integer of `width` bytes, 0 to 8.
    std::uint64_t number(std::size_t width) {
        const ByteView part = bytes(width);
        std::uint64_t value = 0;
        for (std::size_t i = width; i-- > 0;) value = value << 8 | static_cast<unsigned char>(part[i]);
        return value;
    }
    // Signed integer of `width` bytes, 1 to 8.
    std::int64_t signedNumber(std::size_t width) {
        const std::size_t unused = 64 - 8 * width;
        return static_cast<std::int64_t>(number(width) << unused) >> unused;
    }
    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint16_t u16BigEndian() { return __builtin_bswap16(u16()); }

  private:
    ByteView m_data;
    std::size_t m_position = 0;
};

}  // namespace tds

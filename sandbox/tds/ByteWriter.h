// Writer of little-endian wire data.
#pragma once

#include <bit>
#include <cstring>
#include <span>

#include "ByteReader.h"
#include "types/Text.h"

namespace tds {

using tsql::utf16FromUtf8, tsql::utf8FromCodePage1252, tsql::utf8FromUtf16;

// Appends to a buffer that it owns.
class ByteWriter {
  public:
    // Integer of `width` bytes. Bytes above the eighth are zero.
    void number(std::uint64_t value, std::size_t width) {
        m_data.resize(m_data.size() + width);
        fillIn(m_data.size(), value, width);
    }
    void u8(std::uint64_t value) { m_data += static_cast<char>(value & 0xFF); }
    void u16(std::uint64_t value) { number(value, 2); }
    void u32(std::uint64_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }
    void bytes(ByteView part) { m_data.append(part); }
    void bytes(std::span<const std::byte> part) {
        bytes({reinterpret_cast<const char*>(part.data()), part.size()});
    }
    void bigEndian(std::uint64_t value, std::size_t width) {
        while (width-- > 0) u8(value >> (8 * width));
    }

    // B_VARCHAR and US_VARCHAR, [MS-TDS] 2.2.5.1.2: UTF-16 behind a length in code units, of one and two
    // bytes. Longer strings are truncated.
    void varchar(std::string_view utf8, std::size_t lengthWidth = 1, std::size_t maxUnits = 0xFF) {
        const Bytes wire = utf16FromUtf8(utf8);
        const std::size_t units = std::min(wire.size() / 2, maxUnits);
        number(units, lengthWidth);
        m_data.append(wire, 0, 2 * units);
    }

    // Reserves a length field in front of content of unknown size. Returns the position behind the field,
    // which closeLength() or fillIn() needs once the content is written.
    std::size_t openLength(std::size_t width = 2) {
        number(0, width);
        return m_data.size();
    }
    void closeLength(std::size_t position, std::size_t width = 2) {
        fillIn(position, m_data.size() - position, width);
    }
    void fillIn(std::size_t position, std::uint64_t value, std::size_t width) {
        static_assert(std::endian::native == std::endian::little);
        std::memcpy(m_data.data() + position - width, &value, std::min(width, sizeof value));
    }

    Bytes& data() { return m_data; }
    std::size_t size() const { return m_data.size(); }

  private:
    Bytes m_data;
};

}  // namespace tds

// Little-endian writing of wire data.
#pragma once

#include <algorithm>
#include <cstdint>

#include "ByteReader.h"
#include "Utf16.h"

namespace tds {

class ByteWriter {
  public:
    void number(std::uint64_t value, std::size_t width) {
        char part[8];
        for (std::size_t i = 0; i < width; ++i) part[i] = static_cast<char>(value >> (8 * i) & 0xFF);
        m_data.append(part, width);
    }
    void u8(std::uint64_t value) { m_data += static_cast<char>(value); }
    void u16(std::uint64_t value) { number(value, 2); }
    void u32(std::uint64_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }
    void bytes(ByteView part) { m_data.append(part); }
    void u32BigEndian(std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8) u8(value >> shift & 0xFF);
    }

    // Text behind its length in UTF-16 units, one or two bytes; cut where the length ends.
    void shortText(std::string_view utf8) { text(utf8, 1, 0xFF); }
    void longText(std::string_view utf8, std::size_t mostUnits = 0xFFFF) { text(utf8, 2, mostUnits); }

    // A length of two bytes that is known later: the place to fill in when the content is written.
    std::size_t openLength() {
        u16(0);
        return m_data.size();
    }
    void closeLength(std::size_t place) {
        const std::size_t length = m_data.size() - place;
        m_data[place - 2] = static_cast<char>(length & 0xFF);
        m_data[place - 1] = static_cast<char>(length >> 8 & 0xFF);
    }

    Bytes& data() { return m_data; }
    std::size_t size() const { return m_data.size(); }

  private:
    void text(std::string_view utf8, std::size_t lengthWidth, std::size_t mostUnits) {
        const Bytes wire = utf16FromUtf8(utf8);
        const std::size_t units = std::min(wire.size() / 2, mostUnits);
        number(units, lengthWidth);
        m_data.append(wire, 0, 2 * units);
    }

    Bytes m_data;
};

}  // namespace tds

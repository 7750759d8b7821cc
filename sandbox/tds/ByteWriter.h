// Little-endian writing of wire data.
#pragma once

#include <algorithm>
#include <cstdint>

#include "ByteReader.h"
#include "types/Utf16.h"

namespace tds {

using tsql::appendUtf16, tsql::utf16FromUtf8, tsql::utf8FromCodePage1252, tsql::utf8FromUtf16;

class ByteWriter {
  public:
    void number(std::uint64_t value, std::size_t width) {
        char part[32] = {};
        for (std::size_t i = 0; i < std::min<std::size_t>(width, 8); ++i)
            part[i] = static_cast<char>(value >> (8 * i) & 0xFF);
        m_data.append(part, width);
    }
    void u8(std::uint64_t value) { m_data += static_cast<char>(value & 0xFF); }
    void u16(std::uint64_t value) { number(value, 2); }
    void u32(std::uint64_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }
    void bytes(ByteView part) { m_data.append(part); }
    void bigEndian(std::uint64_t value, std::size_t width) {
        while (width-- > 0) u8(value >> (8 * width));
    }
    void utf16(std::string_view utf8) { appendUtf16(m_data, utf8); }

    // Text behind its length in UTF-16 units, one or two bytes; cut where the length ends.
    void shortText(std::string_view utf8) { text(utf8, 1, 0xFF); }
    void longText(std::string_view utf8, std::size_t mostUnits) { text(utf8, 2, mostUnits); }

    // A length that is known later: the place to fill in when the content is written.
    std::size_t openLength(std::size_t width = 2) {
        number(0, width);
        return m_data.size();
    }
    void closeLength(std::size_t place, std::size_t width = 2) {
        fillIn(place, m_data.size() - place, width);
    }
    void fillIn(std::size_t place, std::uint64_t value, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i)
            m_data[place - width + i] = static_cast<char>(value >> (8 * i) & 0xFF);
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

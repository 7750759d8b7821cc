// Rows on their way from the client to the printer: each value is a cell, its length and its bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace sqlcmd {

using CellLength = std::uint32_t;
constexpr CellLength kNullCell = 0xFFFFFFFF;  // length of a NULL, which has no bytes

inline void appendCellLength(std::string& cells, CellLength length) {
    char bytes[sizeof length];
    std::memcpy(bytes, &length, sizeof length);
    cells.append(bytes, sizeof length);
}

inline void appendCell(std::string& cells, std::string_view bytes) {
    appendCellLength(cells, static_cast<CellLength>(bytes.size()));
    cells += bytes;
}

// Removes the first cell from `cells` and returns its bytes; nullopt for NULL.
inline std::optional<std::string_view> takeCell(std::string_view& cells) {
    CellLength length = 0;
    std::memcpy(&length, cells.data(), sizeof length);
    cells.remove_prefix(sizeof length);
    if (length == kNullCell) return std::nullopt;
    const std::string_view bytes = cells.substr(0, length);
    cells.remove_prefix(length);
    return bytes;
}

}  // namespace sqlcmd

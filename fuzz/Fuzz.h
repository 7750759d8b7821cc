// What the fuzz targets share: an input that is several texts, and properties that must hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// The parts of an input between bytes 0x1F (a byte that no other use is made of).
inline std::vector<std::string_view> partsOf(std::string_view input) {
    constexpr char kUnitSeparator = '\x1F';
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; end != std::string_view::npos; input.remove_prefix(end + 1)) {
        end = input.find(kUnitSeparator);
        parts.push_back(input.substr(0, end));
        if (end == std::string_view::npos) break;
    }
    return parts;
}

// A broken property is a finding, as a fault of memory is.
inline void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace fuzz

// Helpers of the fuzz targets: inputs made of several strings, properties that must hold.
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

// Splits an input at its bytes 0x1F, a byte with no meaning to the tested parsers. Returns at least one part.
inline std::vector<std::string_view> partsOf(std::string_view input) {
    constexpr char kUnitSeparator = '\x1F';
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = input.find(kUnitSeparator);
        parts.push_back(input.substr(0, end));
        if (end == std::string_view::npos) return parts;
        input.remove_prefix(end + 1);
    }
}

// Ends the program, which libFuzzer records as a finding, unless the property holds.
inline void require(bool property) {
    if (!property) std::abort();
}

}  // namespace fuzz

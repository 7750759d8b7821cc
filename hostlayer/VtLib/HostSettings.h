// Settings of the host layer: the values of the store's [host] table. Exported by libVtLib.so.
#pragma once

#include <charconv>
#include <concepts>
#include <string>

#include "PlatformExport.h"

namespace hostlayer {

// Returns a setting, a number as decimal digits; `fallback` when the store does not set it.
VT_PLATFORM_EXPORT std::string hostSetting(const char* name, const char* fallback);

// Returns a setting that is a decimal number as a whole and fits into the type; else `fallback`.
template <std::integral Number>
Number numberSetting(const char* name, Number fallback) {
    const std::string text = hostSetting(name, "");
    const char* const end = text.data() + text.size();
    Number number{};
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? number : fallback;
}

}  // namespace hostlayer

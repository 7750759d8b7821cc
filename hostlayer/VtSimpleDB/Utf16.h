// Conversion between UTF-8 and UTF-16. unixODBC's UTF-16 functions do not depend on driver and locale; the
// others treat a connection string as Latin-1.
#pragma once

#include <string>
#include <string_view>

namespace hostlayer {

// Converts up to the first bytes that are not UTF-8. Returns their offset, or npos if all was converted.
std::size_t toUtf16(std::string_view utf8, std::u16string& wide);

// Converts up to the first unit that is not UTF-16.
std::string toUtf8(std::u16string_view wide);

}  // namespace hostlayer

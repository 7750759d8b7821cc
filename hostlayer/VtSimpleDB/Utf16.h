// UTF-16, in which the driver manager takes and hands out texts whatever the driver and the locale are. It
// takes the bytes of other texts for Latin-1, those of a connection string for one.
#pragma once

#include <string>
#include <string_view>

namespace hostlayer {

// Makes `wide` the text, up to the first bytes that are not UTF-8. Where those stand; npos when there are
// none.
std::size_t toUtf16(std::string_view utf8, std::u16string& wide);

std::string toUtf8(std::u16string_view wide);

}  // namespace hostlayer

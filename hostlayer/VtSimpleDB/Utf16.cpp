#include "Utf16.h"

#include <iconv.h>

#include <bit>

namespace hostlayer {
namespace {

constexpr const char* kUtf16 = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

// Converts what there is room for; `from` and `to` become what is left of both.
void convert(const char* fromCode, std::string_view& from, const char* toCode, char* to, std::size_t& room) {
    const iconv_t converter = ::iconv_open(toCode, fromCode);
    if (converter == iconv_t(-1)) return;
    char* next = const_cast<char*>(from.data());
    std::size_t left = from.size();
    ::iconv(converter, &next, &left, &to, &room);
    ::iconv_close(converter);
    from.remove_prefix(from.size() - left);
}

}  // namespace

std::size_t toUtf16(std::string_view utf8, std::u16string& wide) {
    wide.resize(utf8.size());  // no character has more units than bytes
    std::string_view rest = utf8;
    std::size_t room = wide.size() * sizeof(char16_t);
    convert("UTF-8", rest, kUtf16, reinterpret_cast<char*>(wide.data()), room);
    wide.resize(wide.size() - room / sizeof(char16_t));
    return rest.empty() ? std::string_view::npos : utf8.size() - rest.size();
}

std::string toUtf8(std::u16string_view wide) {
    constexpr std::size_t kMostBytes = 3;  // for one unit
    std::string utf8(kMostBytes * wide.size(), '\0');
    std::string_view rest(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(char16_t));
    std::size_t room = utf8.size();
    convert(kUtf16, rest, "UTF-8", utf8.data(), room);
    utf8.resize(utf8.size() - room);
    return utf8;
}

}  // namespace hostlayer

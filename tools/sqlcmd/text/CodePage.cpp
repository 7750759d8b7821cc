#include "text/CodePage.h"

#include <cerrno>

#include "text/Errors.h"
#include "text/Utf.h"

namespace sqlcmd {
namespace {

// Code pages whose name for iconv is not "CP" and the number.
struct NamedCodePage {
    int number;
    const char* name;
};

constexpr NamedCodePage kNamedCodePages[] = {
    {37, "IBM037"},    {1200, "UTF-16LE"}, {1201, "UTF-16BE"}, {20127, "ASCII"},  {20866, "KOI8-R"},
    {21866, "KOI8-U"}, {20932, "EUC-JP"},  {51932, "EUC-JP"},  {51949, "EUC-KR"}, {54936, "GB18030"},
    {65001, "UTF-8"},  {1140, "IBM1140"},  {1047, "IBM1047"},  {500, "IBM500"},   {28605, "ISO-8859-15"}};

constexpr int kIsoLatin = 28590;  // 28591 is ISO 8859-1, up to 28599
constexpr int kLastIsoLatin = 28599;

std::string iconvName(int number) {
    for (const NamedCodePage& page : kNamedCodePages)
        if (page.number == number) return page.name;
    if (number > kIsoLatin && number <= kLastIsoLatin)
        return "ISO-8859-" + std::to_string(number - kIsoLatin);
    return "CP" + std::to_string(number);
}

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)

}  // namespace

bool isCodePage(int number) {
    const iconv_t converter = iconv_open("UTF-8", iconvName(number).c_str());
    if (converter == kNoConverter) return false;
    iconv_close(converter);
    return true;
}

CodePage::CodePage(int number, Direction direction)
    : m_number(number),
      m_direction(direction),
      m_converter(direction == Direction::ToUtf8 ? iconv_open("UTF-8", iconvName(number).c_str())
                                                 : iconv_open(iconvName(number).c_str(), "UTF-8")) {
    if (m_converter == kNoConverter)
        throw ToolError("Sqlcmd: Error: this host has no code page " + std::to_string(number) + ".");
}

std::size_t CodePage::convert(std::string_view text, std::string& out) {
    char* in = const_cast<char*>(text.data());  // iconv does not change it
    std::size_t left = text.size();
    while (left > 0) {
        char buffer[8192];
        char* end = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t result = iconv(m_converter, &in, &left, &end, &room);
        const int error = errno;
        out.append(buffer, end);
        if (result != static_cast<std::size_t>(-1) || error == E2BIG) continue;
        if (error == EINVAL) break;
        if (m_direction == Direction::ToUtf8)
            throw ToolError("Sqlcmd: Error: the input is not in code page " + std::to_string(m_number) + ".");
        const std::size_t skipped = utf8Prefix({in, left}, 1).size();
        in += skipped;
        left -= skipped;
        appendReplacement(out);
    }
    return text.size() - left;
}

void CodePage::appendReplacement(std::string& out) {
    char mark[] = "?";
    char* in = mark;
    std::size_t left = 1;
    char buffer[8];
    char* end = buffer;
    std::size_t room = sizeof buffer;
    iconv(m_converter, &in, &left, &end, &room);
    out.append(buffer, end);
}

}  // namespace sqlcmd

// Conversion between UTF-8 and Windows code pages (-f), through iconv.
#pragma once

#include <iconv.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace sqlcmd {

constexpr int kUtf8 = 65001;
constexpr int kUtf16Le = 1200;

// Whether this host has the code page.
bool isCodePage(int number);

class CodePage {
  public:
    enum class Direction { ToUtf8, FromUtf8 };

    // Throws ToolError for an unknown code page.
    CodePage(int number, Direction direction);
    ~CodePage() { iconv_close(m_converter); }
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;

    // Appends the converted characters and returns the number of bytes that were read: less than all if the
    // last character is incomplete. A character that the code page does not have becomes '?'. Throws
    // ToolError for bytes that are not a character of the code page.
    std::size_t convert(std::string_view text, std::string& out);

  private:
    void appendReplacement(std::string& out);

    int m_number;
    Direction m_direction;
    iconv_t m_converter;
};

}  // namespace sqlcmd

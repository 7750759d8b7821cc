// Reads the lines of a script: a file, standard input, or the text of -Q.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace sqlcmd {

// The script may be of any size; it is read in pieces. Its encoding is UTF-8, with or without a byte order
// mark, or UTF-16 of either byte order, with a byte order mark. Throws ToolError when the file cannot be
// read. Move-only.
class ScriptSource {
  public:
    static ScriptSource ofFile(const std::string& path);
    static ScriptSource ofStandardInput();
    static ScriptSource ofText(std::string text);
    ~ScriptSource();
    ScriptSource(ScriptSource&& other) noexcept;
    ScriptSource& operator=(ScriptSource&&) = delete;

    // Reads the next line, without its line end, as UTF-8. False at the end of the script.
    bool nextLine(std::string& line);
    int lineNumber() const { return m_lineNumber; }     // of the last line read, from 1
    const std::string& name() const { return m_name; }  // path of the file; empty for other scripts

  private:
    enum class Encoding { Unknown, Utf8, Utf16Le, Utf16Be };

    ScriptSource(int descriptor, std::string name, std::string text);
    bool readMore();
    void recogniseByteOrderMark();
    void decode();
    void decodeUtf16();

    int m_descriptor;  // -1: nothing left to read
    std::string m_name;
    Encoding m_encoding = Encoding::Unknown;
    std::string m_raw;             // bytes not decoded yet
    std::string m_text;            // decoded to UTF-8
    std::size_t m_position = 0;    // of the next line in m_text
    char32_t m_highSurrogate = 0;  // waits for its low surrogate; 0: none
    int m_lineNumber = 0;
};

// Throws ToolError unless the path is a file that can be read.
void requireReadable(const std::string& path);

}  // namespace sqlcmd

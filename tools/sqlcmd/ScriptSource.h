// The lines of a script: a file, standard input, or the text of -Q.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace sqlcmd {

// Reads piece by piece, so that a script may be of any size. UTF-8, with or without its byte order mark, and
// UTF-16 of either byte order with its mark. Throws ToolError when the file cannot be read.
class ScriptSource {
  public:
    static ScriptSource ofFile(const std::string& path);
    static ScriptSource ofStandardInput();
    static ScriptSource ofText(std::string text);
    ~ScriptSource();
    ScriptSource(ScriptSource&& other) noexcept;
    ScriptSource& operator=(ScriptSource&&) = delete;

    // The next line without its end; false at the end of the script.
    bool nextLine(std::string& line);
    int lineNumber() const { return m_lineNumber; }     // of the last line, from 1
    const std::string& name() const { return m_name; }  // empty for what is no file

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
    std::string m_raw;           // bytes read and not decoded yet
    std::string m_text;          // decoded UTF-8
    std::size_t m_position = 0;  // of the next line in m_text
    char32_t m_highSurrogate = 0;
    int m_lineNumber = 0;
};

// Throws ToolError unless the file is there, may be read and is no folder.
void requireReadable(const std::string& path);

}  // namespace sqlcmd

// Reads the lines of a script: a file, standard input, a terminal, or the text of -Q.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "text/CodePage.h"

namespace sqlcmd {

// The script may be of any size; it is read in pieces. Its encoding is UTF-8, with or without a byte order
// mark, UTF-16 of either byte order, or a code page. Throws ToolError when the file cannot be read.
// Move-only.
class ScriptSource {
  public:
    // Reads a line into its argument; false at the end.
    using LineFunction = std::function<bool(std::string&)>;

    // `codePage` is that of a script that is not UTF-16 and has no byte order mark.
    static ScriptSource ofFile(const std::string& path, int codePage = kUtf8);
    static ScriptSource ofStandardInput(int codePage = kUtf8);
    static ScriptSource ofText(std::string text);
    static ScriptSource ofLines(LineFunction readLine);
    ~ScriptSource();
    ScriptSource(ScriptSource&& other) noexcept;
    ScriptSource& operator=(ScriptSource&&) = delete;

    // Reads the next line, without its line end, as UTF-8. False at the end of the script.
    bool nextLine(std::string& line);
    bool mayWait() const { return m_mayWait; }          // for a writer or a terminal
    int lineNumber() const { return m_lineNumber; }     // of the last line read, from 1
    const std::string& name() const { return m_name; }  // path of the file; empty for other scripts

  private:
    enum class Encoding { Unknown, Utf8, Utf16Le, Utf16Be, CodePage };

    ScriptSource(int descriptor, std::string name, int codePage);
    bool readMore();
    void recogniseEncoding();
    void decode();
    void decodeUtf16();

    int m_descriptor;  // -1: nothing left to read
    std::string m_name;
    LineFunction m_readLine;  // null: the script is read from the descriptor
    bool m_mayWait;
    int m_codePage;
    Encoding m_encoding = Encoding::Unknown;
    std::unique_ptr<CodePage> m_decoder;  // of Encoding::CodePage
    std::string m_raw;                    // bytes not decoded yet
    std::string m_text;                   // decoded to UTF-8
    std::size_t m_position = 0;           // of the next line in m_text
    char32_t m_highSurrogate = 0;         // waits for its low surrogate; 0: none
    int m_lineNumber = 0;
};

// Throws ToolError unless the path is a file that can be read.
void requireReadable(const std::string& path);

}  // namespace sqlcmd

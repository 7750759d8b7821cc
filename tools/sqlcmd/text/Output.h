// The tool's output: a file (-o) or standard output.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "text/CodePage.h"

namespace sqlcmd {

// Buffered. Every operation throws ToolError when the file cannot be opened or written.
class Output {
  public:
    // An empty path means standard output, which is always UTF-8; a file gets the code page. An existing file
    // is truncated and keeps its mode; a symbolic link is not followed; a named pipe must get a reader within
    // 10 seconds. /dev/stdout, /dev/stderr and /dev/fd/N are the tool's own descriptors.
    explicit Output(const std::string& path, int codePage = kUtf8);
    ~Output();  // does not flush: it could not report a failure
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void write(std::string_view utf8) {
        m_buffer += utf8;
        if (m_buffer.size() >= kBufferSize) flushWholeCharacters();
    }
    void writeLine(std::string_view utf8) {
        m_buffer += utf8;
        write("\n");
    }
    void flush();
    // Writes what has been completed so far, for readers that follow the file. A failure is left to the next
    // flush(), so that it may be called from DB-Library's handlers. Does nothing for encoded output.
    void flushEarly();

    // Continues in another file, on standard output (STDOUT) or standard error (STDERR). If the file cannot
    // be opened, throws and leaves the output as it was.
    void redirect(const std::string& target);
    // Between these calls, writes to another descriptor, such as a pager's input. What a reader that has gone
    // does not take is lost.
    void divert(int descriptor);
    void endDiversion();

    bool isFile() const { return !m_path.empty(); }
    // False for terminals, pipes and the like, which somebody may be reading.
    bool isRegularFile() const { return m_isRegularFile; }
    bool isTerminal() const;

  private:
    static constexpr std::size_t kBufferSize = 65536;  // bytes

    bool isEncoded() const { return isFile() && m_codePage != kUtf8; }
    void encode(std::string_view text, std::string& bytes);
    void flushWholeCharacters();
    void writeBytes(std::string_view bytes);

    std::string m_path;
    int m_codePage;
    std::unique_ptr<CodePage> m_encoder;  // of the code pages other than UTF-8 and UTF-16
    int m_descriptor;
    bool m_isRegularFile;
    int m_diverted = -1;  // the descriptor without the diversion; -1: there is none
    std::string m_buffer;
};

}  // namespace sqlcmd

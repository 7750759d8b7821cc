// Where the tool writes: a file (-o) or standard output.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sqlcmd {

// Buffered. Throws ToolError when something cannot be written, with the system's reason.
class Output {
  public:
    // An empty path is standard output. An existing file is emptied and keeps its mode.
    Output(const std::string& path, bool utf16);
    ~Output();  // what has not been flushed is lost: call flush() first
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void write(std::string_view utf8) {
        m_buffer += utf8;
        if (m_buffer.size() >= kBufferSize) flushWholeCharacters();
    }
    void flush();
    bool isFile() const { return !m_path.empty(); }

  private:
    static constexpr std::size_t kBufferSize = 65536;

    void flushWholeCharacters();
    void writeBytes(std::string_view bytes);

    std::string m_path;
    bool m_utf16;
    int m_descriptor;
    std::string m_buffer;
};

}  // namespace sqlcmd

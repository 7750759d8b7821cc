// A program on a terminal of its own, typed at and read as by a person.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "Program.h"

namespace support {

class TerminalProgram {
  public:
    // Starts it. Throws std::system_error.
    TerminalProgram(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                    unsigned short columns = 80);
    ~TerminalProgram();  // kills it, should it still run
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    void type(std::string_view keys);
    // Reads until the text stands on the screen; false when the program ends, or is silent for a minute,
    // before that.
    bool shows(std::string_view text);
    // Reads to the program's end. Its exit code, 128 + signal number for one that a signal ended; -1 for one
    // that was silent for a minute.
    int end();
    const std::string& screen() const { return m_screen; }  // all that was read so far

  private:
    bool readMore();

    Descriptor m_terminal;
    pid_t m_pid = -1;
    std::string m_screen;
};

inline constexpr std::string_view kControlC = "\x03";
inline constexpr std::string_view kControlD = "\x04";  // end of file, at the beginning of a line

}  // namespace support

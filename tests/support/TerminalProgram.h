// A program on a pseudo-terminal: typed input, and the output on its screen.
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
    ~TerminalProgram();  // kills a running program
    TerminalProgram(const TerminalProgram&) = delete;
    TerminalProgram& operator=(const TerminalProgram&) = delete;

    void type(std::string_view keys);
    // Reads until the screen shows the text. Returns false if the program ends or is silent for a minute
    // first.
    bool shows(std::string_view text);
    // Reads until the program ends. Returns its exit code, 128 + signal number after a signal, -1 after a
    // minute of silence.
    int end();
    const std::string& screen() const { return m_screen; }  // all output so far

  private:
    bool readMore();

    Descriptor m_terminal;
    pid_t m_pid = -1;
    std::string m_screen;
};

inline constexpr std::string_view kControlC = "\x03";
inline constexpr std::string_view kControlD = "\x04";  // end of file at the start of a line

}  // namespace support

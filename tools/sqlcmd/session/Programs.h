// Programs that a script starts: shell commands (!!) and the editor (:ed).
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "text/Output.h"

namespace sqlcmd {

// Runs a command with /bin/sh and waits for its end. It gets the tool's standard streams and no other
// descriptor; its standard input is empty unless the tool's is a terminal. Throws ToolError if the shell
// cannot be started.
void runShellCommand(const std::string& command);

// Pages what is written to the output while the object exists, if the output is a terminal that is narrower
// than `width`. Throws ToolError if the command, a shell command, cannot be started.
class Pager {
  public:
    Pager(Output& output, const std::string& command, std::size_t width);
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

  private:
    Output& m_output;
    int m_input = -1;  // of the pager; -1: it does not run
    pid_t m_pid = -1;
};

// Returns the text as the editor, a shell command, leaves it. Throws ToolError if the temporary file of the
// text cannot be created, written or read, or the shell cannot be started.
std::string edited(const std::string& text, const std::string& editor);

}  // namespace sqlcmd

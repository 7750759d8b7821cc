// Script lines that are typed at a terminal.
#pragma once

#include <string>

#include "script/BatchReader.h"
#include "terminal/LineEditor.h"

namespace sqlcmd {

class TerminalLines {
  public:
    // Reads the reader's next line, after a prompt with its number in the batch. Ctrl-C discards the batch.
    // Returns false at the end of the input. Lines of a batch are kept in the history up to the first one
    // that mentions a password: the password may follow on a line of its own.
    bool read(BatchReader& reader, std::string& line);

  private:
    LineEditor m_editor;
    bool m_hidesBatch = false;
};

}  // namespace sqlcmd

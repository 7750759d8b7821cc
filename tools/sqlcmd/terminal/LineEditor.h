// Lines typed at a terminal, with editing and history (libedit).
#pragma once

#include <string>

typedef struct editline EditLine;
typedef struct history History;

namespace sqlcmd {

class LineEditor {
  public:
    enum class Result { Line, End, Interrupted };

    // Reads from standard input. Prompts on standard output, or on standard error if the output is no
    // terminal. Throws std::bad_alloc.
    LineEditor();
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    // Reads a line without its line end. Ctrl-D on an empty line is the end; Ctrl-C needs an InterruptScope.
    Result read(const std::string& prompt, std::string& line);

    // Adds a line to the history, which ends with the session.
    void remember(const std::string& line);

  private:
    EditLine* m_editor;
    History* m_history;
    std::string m_prompt;
};

// Whether standard input is a terminal.
bool isInteractive();

}  // namespace sqlcmd

// Lines typed at a terminal, with editing and history (libedit).
#pragma once

#include <string>

#include "terminal/WordList.h"

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

    // Adds a line to the history, which ends with the session, and its words to those that Tab completes.
    void remember(const std::string& line);

    // Completes the word before the cursor. Returns libedit's code.
    unsigned char completeWord();
    const std::string& prompt() const { return m_prompt; }

  private:
    EditLine* m_editor;
    History* m_history;
    std::string m_prompt;
    WordList m_words;
};

// Whether standard input is a terminal.
bool isInteractive();

}  // namespace sqlcmd

#include "terminal/LineEditor.h"

#include <histedit.h>
#include <unistd.h>

#include <cstdio>
#include <cwchar>
#include <new>

#include "terminal/Interrupt.h"

namespace sqlcmd {
namespace {

constexpr int kHistorySize = 1000;  // lines

const char* promptOf(EditLine* editor) {
    void* prompt = nullptr;
    el_get(editor, EL_CLIENTDATA, &prompt);
    return static_cast<const std::string*>(prompt)->c_str();
}

// Reads a character for libedit, whose own function repeats a read that a signal has interrupted. Returns the
// number of characters, -1 after an error.
int readCharacter(EditLine* /*editor*/, wchar_t* character) {
    std::mbstate_t state{};
    for (;;) {
        char byte = 0;
        const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
        if (count <= 0) return static_cast<int>(count);
        const std::size_t result = std::mbrtowc(character, &byte, 1, &state);
        constexpr auto kIncomplete = static_cast<std::size_t>(-2);
        constexpr auto kInvalid = static_cast<std::size_t>(-1);
        if (result == kInvalid) state = {};
        if (result != kInvalid && result != kIncomplete) return 1;
    }
}

FILE* promptStream() {
    return isatty(STDOUT_FILENO) != 0 ? stdout : stderr;
}

}  // namespace

LineEditor::LineEditor()
    : m_editor(el_init("sqlcmd", stdin, promptStream(), stderr)), m_history(history_init()) {
    if (m_editor == nullptr || m_history == nullptr) throw std::bad_alloc();
    HistEvent event;
    history(m_history, &event, H_SETSIZE, kHistorySize);
    history(m_history, &event, H_SETUNIQUE, 1);
    el_set(m_editor, EL_CLIENTDATA, &m_prompt);
    el_set(m_editor, EL_PROMPT, promptOf);
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_HIST, history, m_history);
    el_wset(m_editor, EL_GETCFN, readCharacter);
    el_source(m_editor, nullptr);  // ~/.editrc
}

LineEditor::~LineEditor() {
    el_end(m_editor);
    history_end(m_history);
}

LineEditor::Result LineEditor::read(const std::string& prompt, std::string& line) {
    m_prompt = prompt;
    clearInterrupt();
    constexpr int kRaw = 1;  // before the prompt: el_gets() would lose a Ctrl-D that is typed in between
    el_set(m_editor, EL_PREP_TERM, kRaw);
    int length = 0;
    const char* text = el_gets(m_editor, &length);
    if (isInterrupted()) {
        std::fputs("^C\n", promptStream());
        clearInterrupt();
        return Result::Interrupted;
    }
    if (text == nullptr || length <= 0) {
        std::fputs("\n", promptStream());
        return Result::End;
    }
    line.assign(text, static_cast<std::size_t>(length));
    if (line.ends_with('\n')) line.pop_back();
    return Result::Line;
}

void LineEditor::remember(const std::string& line) {
    HistEvent event;
    if (!line.empty()) history(m_history, &event, H_ENTER, line.c_str());
}

bool isInteractive() {
    return isatty(STDIN_FILENO) != 0;
}

}  // namespace sqlcmd

#include "terminal/LineEditor.h"

#include <histedit.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cwchar>
#include <new>

#include "terminal/Interrupt.h"
#include "text/Utf.h"

namespace sqlcmd {
namespace {

constexpr int kHistorySize = 1000;  // lines

LineEditor& ownerOf(EditLine* editor) {
    void* owner = nullptr;
    el_get(editor, EL_CLIENTDATA, &owner);
    return *static_cast<LineEditor*>(owner);
}

const char* promptOf(EditLine* editor) {
    return ownerOf(editor).prompt().c_str();
}

unsigned char completeWordOf(EditLine* editor, int /*character*/) {
    return ownerOf(editor).completeWord();
}

bool isInputWaiting() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, 0) > 0;
}

// Waits for input. False when an interrupt ends the wait, also one that came just before it: SIGINT is
// blocked except while ppoll() waits.
bool waitForInput() {
    sigset_t interrupt{}, before{};
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, &before);
    pollfd input{STDIN_FILENO, POLLIN, 0};
    const bool isReady = !isInterrupted() && ppoll(&input, 1, nullptr, &before) > 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return isReady;
}

// Reads a character for libedit, whose own function repeats a read that a signal has interrupted. Returns the
// number of characters, -1 after an error.
int readCharacter(EditLine* /*editor*/, wchar_t* character) {
    std::mbstate_t state{};
    for (;;) {
        char byte = 0;
        const ssize_t count = waitForInput() ? ::read(STDIN_FILENO, &byte, 1) : -1;
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
    el_set(m_editor, EL_CLIENTDATA, this);
    el_set(m_editor, EL_PROMPT, promptOf);
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_HIST, history, m_history);
    el_wset(m_editor, EL_GETCFN, readCharacter);
    el_wset(m_editor, EL_ADDFN, L"sqlcmd-complete", L"Complete the word", completeWordOf);
    el_set(m_editor, EL_BIND, "^I", "sqlcmd-complete", nullptr);
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
    m_words.addWordsOf(line);
}

// A Tab of pasted text, which more text follows, and a Tab that follows no word stay a Tab.
unsigned char LineEditor::completeWord() {
    const LineInfo* line = el_line(m_editor);
    const char* start = line->cursor;
    while (start != line->buffer && isCompletable(start[-1])) --start;
    const std::string_view prefix(start, static_cast<std::size_t>(line->cursor - start));
    if (prefix.empty() || isInputWaiting()) return el_insertstr(m_editor, "\t") == 0 ? CC_REFRESH : CC_ERROR;
    const std::vector<std::string> words = m_words.completionsOf(prefix);
    if (words.empty()) return CC_REFRESH_BEEP;
    const std::string common = commonPrefix(words);
    if (words.size() > 1 && common.size() == prefix.size()) {
        std::fputc('\n', promptStream());
        for (const std::string& word : words) std::fprintf(promptStream(), "%s  ", word.c_str());
        std::fputc('\n', promptStream());
        return CC_REDISPLAY;
    }
    el_deletestr(m_editor, static_cast<int>(utf8Length(prefix)));
    el_insertstr(m_editor, (words.size() == 1 ? common + " " : common).c_str());
    return CC_REFRESH;
}

bool isInteractive() {
    return isatty(STDIN_FILENO) != 0;
}

}  // namespace sqlcmd

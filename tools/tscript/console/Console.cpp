#include "console/Console.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "console/Confirmation.h"
#include "console/Outcome.h"
#include "console/Terminal.h"
#include "console/TextWidth.h"

namespace {

constexpr char kControlC = '\x03';
constexpr std::string_view kLayout = "\n\t";  // control characters that a terminal may receive

std::FILE* const g_results = stdout;

// Turns the terminal's echo off. Ctrl-C arrives as a byte meanwhile, because a signal would end the program
// with the echo still off; it counts as an end of line, so that read() returns at once.
class EchoOff {
  public:
    EchoOff() {
        if (tcgetattr(STDIN_FILENO, &m_before) != 0) return;
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
        silent.c_cc[VEOL] = kControlC;
        m_changed = tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
    }
    ~EchoOff() {
        if (m_changed) tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;
    bool isOff() const { return m_changed; }

  private:
    termios m_before{};
    bool m_changed = false;
};

// Byte by byte: a buffer of the C library would keep a copy of the secret.
Secret readLine(std::size_t maximum) {
    Secret line(maximum + 1);
    char c = 0;
    for (;;) {
        const ssize_t got = read(STDIN_FILENO, &c, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0)
            throw Failure(ExitCode::kInstallation,
                          std::string("standard input cannot be read: ") + std::strerror(errno));
        if (got == 0 || c == '\n') break;
        if (c == kControlC) throw Failure(ExitCode::kInterrupted, "interrupted");
        if (c == '\0') throw Failure(ExitCode::kUsage, "the input holds a NUL byte");
        if (line.text().size() == maximum)
            throw Failure(ExitCode::kUsage, "the input is longer than " + std::to_string(maximum) + " bytes");
        line.text() += c;
    }
    if (line.text().empty()) throw Failure(ExitCode::kUsage, "nothing was entered");
    return line;
}

std::string shownOnStderr(const std::string& text) {
    return isTerminal(STDERR_FILENO) ? withoutControls(text, kLayout) : text;
}

}  // namespace

Secret readSecret(const std::string& prompt, std::size_t maximum) {
    if (!isTerminal(STDIN_FILENO)) return readLine(maximum);
    if (!canAsk())
        throw Failure(ExitCode::kUsage, prompt + " is needed",
                      "Give it as the first line of standard input, from a file or a pipe.");
    const EchoOff echo;
    if (!echo.isOff()) throw Failure(ExitCode::kUsage, "the terminal's echo cannot be turned off");
    writePrompt(prompt + ": ");
    Secret line = readLine(maximum);
    std::fputc('\n', stderr);
    return line;
}

// `stdout` is an assignable variable of the GNU C library; printf() uses its current value.
void redirectLibraryOutput() {
    stdout = stderr;
}

std::FILE* resultStream() {
    return g_results;
}

void writeResult(std::string_view text) {
    isTerminal(STDOUT_FILENO) ? writeStyled(withoutControls(text, kLayout)) : writeStyled(text);
}

void writeNextLines(std::string_view lines) {
    writeResult(lines);
    std::fflush(g_results);
}

void writeStyled(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), g_results);
    if (!text.empty() && text.back() != '\n') std::fputc('\n', g_results);
}

void writePrompt(const std::string& text) {
    std::fputs(shownOnStderr(text).c_str(), stderr);
}

void writeNote(const std::string& text) {
    const std::size_t begin = std::min(text.find_first_not_of('\n'), text.size());
    const std::size_t end = text.find_last_not_of('\n') + 1;
    if (begin >= end) return;
    std::fprintf(stderr, "%s\n", shownOnStderr(text.substr(begin, end - begin)).c_str());
}

#include "console/Console.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "console/Confirmation.h"
#include "console/Outcome.h"
#include "console/Terminal.h"
#include "console/TextWidth.h"

namespace {

constexpr char kControlC = '\x03';
constexpr std::string_view kLayout = "\n\t";  // the control characters that a terminal is given

std::FILE* const g_results = stdout;

// Takes the terminal's echo away. Ctrl-C is read as a byte meanwhile, so that it cannot end the program with
// the echo still off; it ends the line, so that it is read at once.
class WithoutEcho {
  public:
    WithoutEcho() {
        if (tcgetattr(STDIN_FILENO, &m_before) != 0) return;
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
        silent.c_cc[VEOL] = kControlC;
        m_changed = tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
    }
    ~WithoutEcho() {
        if (m_changed) tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    }
    WithoutEcho(const WithoutEcho&) = delete;
    WithoutEcho& operator=(const WithoutEcho&) = delete;
    bool works() const { return m_changed; }

  private:
    termios m_before{};
    bool m_changed = false;
};

// Byte by byte, so that nothing of a secret stays in a buffer of the C library.
Secret readLine(std::size_t maximum) {
    Secret line(maximum + 1);
    char c = 0;
    for (;;) {
        const ssize_t got = read(STDIN_FILENO, &c, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got != 1 || c == '\n') break;
        if (c == kControlC) throw Failure(ExitCode::kInterrupted, "interrupted");
        if (c == '\0') throw Failure(ExitCode::kUsage, "the text read holds a NUL byte");
        if (line.text().size() == maximum)
            throw Failure(ExitCode::kUsage,
                          "the text read is longer than " + std::to_string(maximum) + " bytes");
        line.text() += c;
    }
    if (line.text().empty()) throw Failure(ExitCode::kUsage, "nothing was entered");
    return line;
}

}  // namespace

Secret readSecret(const std::string& prompt, std::size_t maximum) {
    if (!isTerminal(STDIN_FILENO)) return readLine(maximum);
    if (!canAsk())
        throw Failure(ExitCode::kUsage, prompt + ": nobody can be asked",
                      "Give it as the first line of standard input, from a file or a pipe.");
    const WithoutEcho silence;
    if (!silence.works()) throw Failure(ExitCode::kUsage, "the terminal's echo cannot be turned off");
    std::fprintf(stderr, "%s: ", prompt.c_str());
    Secret line = readLine(maximum);
    std::fputc('\n', stderr);
    return line;
}

// The GNU C library's standard streams are variables that may be set; every printf() then follows.
void separateResults() {
    stdout = stderr;
}

std::FILE* resultStream() {
    return g_results;
}

void writeResult(std::string_view text) {
    isTerminal(STDOUT_FILENO) ? writePainted(cleaned(text, kLayout)) : writePainted(text);
}

void writePainted(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), g_results);
    if (!text.empty() && text.back() != '\n') std::fputc('\n', g_results);
}

void writeNote(const std::string& text) {
    const std::size_t begin = std::min(text.find_first_not_of('\n'), text.size());
    const std::size_t end = text.find_last_not_of('\n') + 1;
    if (begin >= end) return;
    const std::string note = text.substr(begin, end - begin);
    std::fprintf(stderr, "%s\n", (isTerminal(STDERR_FILENO) ? cleaned(note, kLayout) : note).c_str());
}

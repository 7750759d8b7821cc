#include "TerminalProgram.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>

namespace support {

namespace {

constexpr int kSilenceLimit = 60'000;  // milliseconds
constexpr unsigned short kRows = 24;

[[noreturn]] void become(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment) {
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    for (const std::string& assignment : environment) putenv(const_cast<char*>(assignment.c_str()));
    execvp(words.front(), words.data());
    _exit(127);
}

}  // namespace

TerminalProgram::TerminalProgram(const std::vector<std::string>& command,
                                 const std::vector<std::string>& environment, unsigned short columns) {
    const winsize size{kRows, columns, 0, 0};
    int terminal = -1;
    m_pid = forkpty(&terminal, nullptr, nullptr, &size);
    if (m_pid < 0) throw std::system_error(errno, std::generic_category(), "forkpty");
    if (m_pid == 0) become(command, environment);
    m_terminal = Descriptor(terminal);
}

TerminalProgram::~TerminalProgram() {
    if (m_pid <= 0) return;
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
}

void TerminalProgram::type(std::string_view keys) {
    if (write(m_terminal.get(), keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
        throw std::system_error(errno, std::generic_category(), "write to a terminal");
}

// Reading fails once the program has closed its side of the terminal.
bool TerminalProgram::readMore() {
    pollfd readable{m_terminal.get(), POLLIN, 0};
    if (poll(&readable, 1, kSilenceLimit) != 1) return false;
    std::array<char, 4096> block{};
    const ssize_t got = read(m_terminal.get(), block.data(), block.size());
    if (got > 0) m_screen.append(block.data(), static_cast<std::size_t>(got));
    return got > 0;
}

bool TerminalProgram::shows(std::string_view text) {
    while (m_screen.find(text) == std::string::npos)
        if (!readMore()) return false;
    return true;
}

int TerminalProgram::end() {
    while (readMore()) continue;
    int exitCode = -1;
    const bool byItself = waitFor(m_pid, std::chrono::milliseconds(kSilenceLimit), exitCode);
    m_pid = -1;
    return byItself ? exitCode : -1;
}

}  // namespace support

// Child processes of tests: started without a shell, always with a time limit.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace support {

// Owns a file descriptor.
class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    int get() const { return m_fd; }
    void reset();

  private:
    int m_fd;
};

struct ProgramOptions {
    std::string input;                        // content of standard input
    std::filesystem::path workingDirectory;   // empty: the caller's
    std::vector<std::string> environment;     // NAME=value, on top of the caller's environment
    std::chrono::milliseconds limit{60'000};  // the program's process group is killed after that
};

struct ProgramResult {
    int exitCode = -1;  // 128 + signal number for a program that a signal ended
    bool timedOut = false;
    std::string output;
    std::string errors;
};

// command: the program (looked for in PATH when it has no slash) and its arguments.
// Throws std::system_error when it cannot be started.
ProgramResult runProgram(const std::vector<std::string>& command, const ProgramOptions& options = {});

// Parts of runProgram(), for long-lived children. The child leads a process group.
struct StandardFiles {
    int input, output, errors;
};
pid_t spawn(const std::vector<std::string>& command, const ProgramOptions& options, StandardFiles files);
// Waits until the child ends; at the limit it kills the group. Returns true if the child ended by itself.
bool waitFor(pid_t pid, std::chrono::milliseconds limit, int& exitCode);
Descriptor memoryFile(const std::string& content = {});
std::string contentOf(const Descriptor& memoryFile);

}  // namespace support

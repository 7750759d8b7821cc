// A child process that leads its own process group.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "files/Descriptor.h"

namespace hostlayer {

// Runs one child at a time: start(), then waitForEnd() and, if that times out, endGroup(), then reap(). A
// child that is not reaped stays a zombie. `tailSize` is the number of bytes of the child's standard error to
// keep: the last ones.
class ChildProcess {
  public:
    enum class Output { kInherit, kDiscard };

    ChildProcess() = default;

    // Starts a program; a name without a slash is looked up in PATH. `arguments` begins with the program's
    // own name and is not changed. `variables` ("NAME=value") replace those of the caller's environment. The
    // child's standard input is /dev/null, its standard error a pipe to this object; all descriptors above
    // standard error are closed. Returns 0 or the errno of the failure.
    int start(const std::string& program, std::vector<std::string>& arguments,
              std::vector<std::string>& variables, Output output);

    // True from a successful start() to reap().
    bool isStarted() const { return m_pid > 0; }

    // Waits until the child has ended. Without a limit (nullopt) it waits for as long as that takes. False
    // when the time ran out. Does not reap the child.
    bool waitForEnd(std::optional<std::chrono::milliseconds> limit, std::size_t tailSize);

    // Ends the child's process group: SIGTERM, two seconds to react, SIGKILL.
    void endGroup(std::size_t tailSize);

    // Reaps the child and reads the rest of its standard error. `status` is that of waitpid(2). Returns 0 or
    // the errno of the failure.
    int reap(int& status, std::size_t tailSize);

    // End of the child's standard error. Kept until the next start().
    const std::string& errorTail() const { return m_tail; }

  private:
    bool pollForEnd(std::chrono::milliseconds limit);
    bool hasEnded() const;
    bool readErrors(std::size_t tailSize);
    void drainErrors(std::size_t tailSize);

    pid_t m_pid = -1;     // -1: none
    Descriptor m_pidfd;   // readable once the child has ended; empty before Linux 5.3
    Descriptor m_errors;  // reading end of the child's standard error; empty once the pipe has closed
    std::string m_tail;
};

}  // namespace hostlayer

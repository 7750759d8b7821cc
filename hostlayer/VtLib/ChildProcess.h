// One running child process: started in a group of its own, watched, ended.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "Descriptor.h"

namespace hostlayer {

class ChildProcess {
  public:
    ChildProcess() = default;

    // Starts the program (looked for in PATH when its name has no slash). Standard input is /dev/null,
    // standard error is kept, every other descriptor but standard output is closed. 0, or the errno of what
    // failed.
    int start(const std::string& program, std::vector<std::string>& words, bool dropsOutput);
    bool isRunning() const { return m_pid > 0; }

    // Keeps the last `tailSize` bytes of standard error and waits for the child's end, which is left for
    // reap(). False when the time ran out; a negative time is none.
    bool waitForEnd(std::chrono::milliseconds limit, std::size_t tailSize);
    // Ends the whole process group: first asked to, then forced to.
    void endGroup(std::size_t tailSize);
    // Takes the ended child's status, as of waitpid(2), and what is left of its standard error. 0, or the
    // errno of what failed.
    int reap(int& status, std::size_t tailSize);

    const std::string& errorTail() const { return m_tail; }

  private:
    bool pollOnce(std::chrono::milliseconds limit);
    bool hasEnded() const;
    bool readErrors(std::size_t tailSize);
    void drainErrors(std::size_t tailSize);

    pid_t m_pid = -1;
    Descriptor m_watch;   // readable once the child has ended; none on a kernel without such descriptors
    Descriptor m_errors;  // the pipe of the child's standard error; none once it is closed
    std::string m_tail;
};

}  // namespace hostlayer

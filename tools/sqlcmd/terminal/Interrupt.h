// Ctrl-C in an interactive session.
#pragma once

#include <csignal>

namespace sqlcmd {

// While an object exists, SIGINT does not end the tool: isInterrupted() becomes true, and a system call that
// waits returns EINTR.
class InterruptScope {
  public:
    InterruptScope();
    ~InterruptScope();
    InterruptScope(const InterruptScope&) = delete;
    InterruptScope& operator=(const InterruptScope&) = delete;

  private:
    struct sigaction m_previous {};
};

bool isInterrupted();
void clearInterrupt();

}  // namespace sqlcmd

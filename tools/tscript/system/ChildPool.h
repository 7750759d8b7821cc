// Child processes that run at the same time.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "system/ChildProcess.h"

// Each child is in a process group of its own, so that Ctrl-C reaches it once: SIGINT, SIGTERM and SIGHUP are
// passed on to the children and do not end this process while a pool exists. A process has one pool at most.
class ChildPool {
  public:
    struct Ended {
        pid_t pid;
        int exitCode;  // or 128 + the number of the signal that ended it
    };

    ChildPool();
    ~ChildPool();  // ends the children that still run, and waits for them
    ChildPool(const ChildPool&) = delete;
    ChildPool& operator=(const ChildPool&) = delete;

    // Throws Failure (kInstallation).
    pid_t start(const std::vector<std::string>& command, ChildOptions options);
    Ended waitForOne();  // there must be a child
    bool interrupted() const { return m_interrupted; }

  private:
    void signalAll(int signal) const;

    std::vector<pid_t> m_children;
    sigset_t m_signals;
    sigset_t m_before;
    bool m_interrupted = false;
};

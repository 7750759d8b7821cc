// Ctrl-C, or a terminal that is closed, while a script runs: it ends the query tool, not this process, so
// that the library closes the run's journal row and removes its files.
#pragma once

#include <signal.h>

#include <atomic>
#include <thread>

class InterruptGuard {
  public:
    InterruptGuard();  // from here on SIGINT, SIGTERM and SIGHUP end the child processes of this thread
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
    bool interrupted() const { return m_interrupted; }

  private:
    void watch(int parentThread);

    std::atomic<bool> m_interrupted{false};
    std::atomic<bool> m_ending{false};
    sigset_t m_before;
    std::thread m_watcher;
};

// For the short time in which a file is made beside its place, or the library works on a package's plain
// copy: those signals wait until it is there or gone, so that no part of it stays.
class InterruptDelay {
  public:
    InterruptDelay();
    ~InterruptDelay();
    InterruptDelay(const InterruptDelay&) = delete;
    InterruptDelay& operator=(const InterruptDelay&) = delete;

  private:
    sigset_t m_before;
};

// Handling of SIGINT, SIGTERM and SIGHUP (Ctrl-C, a closed terminal).
#pragma once

#include <signal.h>

#include <atomic>
#include <thread>

// While a guard exists, these signals end the child processes of the thread that made it instead of this
// process. The query tool ends, and the library still closes the run's journal row and deletes its files.
class InterruptGuard {
  public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
    bool interrupted() const { return m_interrupted; }

  private:
    void watch(pid_t parentThread);

    std::atomic<bool> m_interrupted{false};
    std::atomic<bool> m_ending{false};
    sigset_t m_before;
    std::thread m_watcher;
};

// Blocks these signals for a short time: while a file is written beside its target, or while the library
// holds a package's plain copy on disk. An interrupted program would leave such a file behind.
class InterruptDelay {
  public:
    InterruptDelay();
    ~InterruptDelay();
    InterruptDelay(const InterruptDelay&) = delete;
    InterruptDelay& operator=(const InterruptDelay&) = delete;

  private:
    sigset_t m_before;
};

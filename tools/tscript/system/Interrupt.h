// Handling of SIGINT, SIGTERM and SIGHUP (Ctrl-C, a closed terminal).
#pragma once

#include <signal.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

// SIGINT, SIGTERM and SIGHUP without those that the caller ignores (nohup, a background job of a shell).
sigset_t interruptions();

// While a guard exists, these signals do not end this process. The first one ends the child processes of the
// thread that made the guard, and the waits for a server that have begun. The query tool ends, and the
// library still closes the run's journal row, for which each request has a few seconds, and deletes its
// files. The second signal ends all further waits as well; if that does not help, the process ends.
class InterruptGuard {
  public:
    // After `timeout` (0: no limit), acts as after a first signal.
    explicit InterruptGuard(std::chrono::seconds timeout = std::chrono::seconds::zero());
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;
    bool interrupted() const { return m_interrupted; }
    bool timedOut() const { return m_timedOut; }

  private:
    using Clock = std::chrono::steady_clock;

    void watch(pid_t parentThread);
    bool isTimedOut(Clock::time_point now) const;
    void endWaits(pid_t parentThread) const;

    std::atomic<bool> m_interrupted{false};
    std::atomic<bool> m_timedOut{false};
    std::atomic<bool> m_ending{false};
    const std::chrono::seconds m_timeout;
    const Clock::time_point m_began = Clock::now();
    Clock::time_point m_first;  // the first signal
    std::optional<Clock::time_point> m_second;
    sigset_t m_before;
    std::thread m_watcher;
};

// From now on, the process ends with a message where lack of memory would abort it: parts of the parser of
// the command line, for example, are noexcept and allocate.
void endWhenMemoryLacks();

// From now on, the process ends with a message and the exit code of a failed connection if a login or
// statement over ODBC does not return although its connection has been closed, or if FreeTDS aborts.
void endWhenDriverFails();

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

// Time limit for the query tool, which the library waits for without one.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

class ToolLimit {
  public:
    // Ends the child processes of the calling thread after 60 seconds. Signals that this thread blocks stay
    // blocked in the timer's thread.
    ToolLimit();
    ~ToolLimit();
    ToolLimit(const ToolLimit&) = delete;
    ToolLimit& operator=(const ToolLimit&) = delete;

    static constexpr int kSeconds = 60;
    bool expired();
    static std::string text() { return "was stopped after " + std::to_string(kSeconds) + " seconds"; }

  private:
    void wait(pid_t parentThread);

    std::mutex m_mutex;
    std::condition_variable m_change;
    bool m_ending = false;
    bool m_expired = false;
    std::thread m_timer;
};

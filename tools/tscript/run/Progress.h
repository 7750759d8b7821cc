// Progress line of a running script: elapsed time and current step, on standard error.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

// Appears after half a second, only on an ANSI terminal, and is cleared by the destructor. The object must be
// made by the thread that runs the script.
class Progress {
  public:
    Progress(std::string script, bool isWanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    double seconds() const;

  private:
    void update(pid_t scriptThread);
    void draw(const char* step) const;

    const std::string m_script;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_ending = false;
    std::thread m_thread;
};

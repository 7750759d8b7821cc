// A line on standard error that tells how long a script has been running and what it is doing.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

// Shown from its second half-second on, to a lively terminal alone, and cleared in the end. The thread that
// makes the object is the one that runs the script.
class Progress {
  public:
    Progress(std::string script, bool wanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    double seconds() const;

  private:
    void show(int scriptThread);
    void draw(const char* doing) const;

    const std::string m_script;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_ending = false;
    std::thread m_thread;
};

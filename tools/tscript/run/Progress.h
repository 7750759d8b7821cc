// Display of a running script: its progress line (elapsed time and current step, on standard error) and the
// lines that it prints (on standard output).
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

class FollowedOutput;

// The progress line appears after half a second, only on an ANSI terminal, and is cleared by the destructor.
// The object must be made by the thread that runs the script.
class Progress {
  public:
    // `batchesBefore`: number of batches that the library sends before the script's first one.
    Progress(std::string script, bool isLineWanted, int batchesBefore, FollowedOutput& output);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    double seconds() const;

  private:
    void update(pid_t scriptThread);
    void printNewLines(pid_t tool);
    std::string stepOf(pid_t tool) const;
    void draw(const std::string& step);
    void clear();

    const std::string m_script;
    const bool m_hasLine;
    const int m_batchesBefore;
    FollowedOutput& m_output;
    bool m_isDrawn = false;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_ending = false;
    std::thread m_thread;
};

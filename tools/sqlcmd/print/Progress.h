// Shows how far the script is: in the process's name, and on standard error with --progress.
#pragma once

#include <chrono>

namespace sqlcmd {

class Progress {
  public:
    explicit Progress(bool isEnabled);

    void beginBatch();
    void addRow() {
        if (++m_rows % kRowsBetweenChecks == 0) update();
    }
    void update();  // prints if a second has passed since the last line
    void endBatch();

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr long long kRowsBetweenChecks = 4096;

    void print(const char* lineEnd);

    bool m_isEnabled;
    bool m_isTerminal;
    int m_batches = 0;
    long long m_rows = 0;
    Clock::time_point m_start;
    Clock::time_point m_lastPrint;
};

}  // namespace sqlcmd

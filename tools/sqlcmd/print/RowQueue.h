// Rows that are fetched in one thread and printed in another.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace sqlcmd {

// The fetching thread fills a buffer while the printing thread, which starts with the first full buffer,
// prints the one before. Few rows are printed by the fetching thread itself.
class RowQueue {
  public:
    // Prints rows, each a sequence of cells (client/Cells.h).
    using Printer = std::function<void(std::string_view rows)>;

    RowQueue() = default;
    ~RowQueue();
    RowQueue(const RowQueue&) = delete;
    RowQueue& operator=(const RowQueue&) = delete;

    // Buffer that the next row is appended to.
    std::string& rows() { return m_rows; }
    // Ends a row. Throws the printer's exception, which may be that of an earlier row.
    void endRow() {
        if (m_rows.size() >= kBufferSize) passOn();
    }
    // Prints all rows that have ended. Throws the printer's exception.
    void drain();
    // The same if the printing thread is idle; returns false otherwise.
    bool drainIfIdle();

    // Owner of the printer of a result's rows. The destructor discards the rows that are not printed.
    class Result {
      public:
        Result(RowQueue& queue, Printer printer) : m_queue(queue) { queue.m_printer = std::move(printer); }
        ~Result();
        Result(const Result&) = delete;
        Result& operator=(const Result&) = delete;

      private:
        RowQueue& m_queue;
    };

  private:
    static constexpr std::size_t kBufferSize = 262'144;  // bytes

    void passOn();
    void waitForPrinter(std::unique_lock<std::mutex>& lock);
    void startThread();
    void printPassedRows();

    std::string m_rows;  // of the fetching thread
    Printer m_printer;   // changes only while the printing thread is idle

    std::mutex m_mutex;  // of the members below
    std::condition_variable m_change;
    std::string m_passedRows;  // of the printing thread while m_isPrinting
    bool m_isPrinting = false;
    bool m_isEnding = false;
    std::exception_ptr m_failure;
    std::thread m_thread;  // of the fetching thread
};

}  // namespace sqlcmd

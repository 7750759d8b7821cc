#include "print/RowQueue.h"

#include <csignal>
#include <utility>

namespace sqlcmd {

RowQueue::~RowQueue() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_change.notify_all();
    m_thread.join();
}

void RowQueue::drain() {
    if (m_thread.joinable()) {
        std::unique_lock lock(m_mutex);
        waitForPrinter(lock);
    }
    if (m_rows.empty()) return;
    const std::string_view rows = m_rows;
    m_printer(rows);
    m_rows.clear();
}

bool RowQueue::drainIfIdle() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_isPrinting) return false;
    }
    drain();
    return true;
}

RowQueue::Result::~Result() {
    {
        std::unique_lock lock(m_queue.m_mutex);
        m_queue.m_change.wait(lock, [&] { return !m_queue.m_isPrinting; });
        m_queue.m_failure = nullptr;
    }
    m_queue.m_rows.clear();
    m_queue.m_printer = nullptr;
}

void RowQueue::passOn() {
    if (!m_thread.joinable()) startThread();
    {
        std::unique_lock lock(m_mutex);
        waitForPrinter(lock);
        m_passedRows.swap(m_rows);
        m_isPrinting = true;
    }
    m_change.notify_all();
    m_rows.clear();
}

void RowQueue::waitForPrinter(std::unique_lock<std::mutex>& lock) {
    m_change.wait(lock, [this] { return !m_isPrinting; });
    if (m_failure) std::rethrow_exception(std::exchange(m_failure, nullptr));
}

// Ctrl-C must interrupt the fetching thread, which waits for the server.
void RowQueue::startThread() {
    sigset_t all, previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    m_thread = std::thread([this] { printPassedRows(); });
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

void RowQueue::printPassedRows() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_change.wait(lock, [this] { return m_isPrinting || m_isEnding; });
        if (!m_isPrinting) return;
        lock.unlock();
        std::exception_ptr failure;
        try {
            m_printer(m_passedRows);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        m_failure = failure;
        m_isPrinting = false;
        m_change.notify_all();
    }
}

}  // namespace sqlcmd

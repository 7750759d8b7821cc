#include "installation/ToolLimit.h"

#include <signal.h>
#include <unistd.h>

#include <chrono>

#include "system/ChildProcess.h"

ToolLimit::ToolLimit() : m_timer(&ToolLimit::wait, this, gettid()) {}

ToolLimit::~ToolLimit() {
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_change.notify_one();
    m_timer.join();
}

bool ToolLimit::expired() {
    const std::lock_guard lock(m_mutex);
    return m_expired;
}

void ToolLimit::wait(pid_t parentThread) {
    std::unique_lock lock(m_mutex);
    if (m_change.wait_for(lock, std::chrono::seconds(kSeconds), [this] { return m_ending; })) return;
    m_expired = true;
    for (const pid_t child : childrenOf(parentThread)) kill(child, SIGKILL);
}

#include "system/ChildPool.h"

#include <pthread.h>
#include <sys/wait.h>

#include "system/Interrupt.h"

ChildPool::ChildPool() : m_signals(interruptions()) {
    sigaddset(&m_signals, SIGCHLD);
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_before);
}

ChildPool::~ChildPool() {
    signalAll(SIGTERM);
    while (!m_children.empty()) waitForOne();
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

pid_t ChildPool::start(const std::vector<std::string>& command, ChildOptions options) {
    options.ownGroup = true;
    return m_children.emplace_back(startChild(command, options));
}

ChildPool::Ended ChildPool::waitForOne() {
    for (;;) {
        for (auto child = m_children.begin(); child != m_children.end(); ++child) {
            int status = 0;
            const pid_t pid = *child;
            if (waitpid(pid, &status, WNOHANG) != pid) continue;
            m_children.erase(child);
            return {pid, exitCodeOf(status)};
        }
        const int signal = sigwaitinfo(&m_signals, nullptr);
        if (signal <= 0 || signal == SIGCHLD) continue;
        m_interrupted = true;
        signalAll(signal);
    }
}

void ChildPool::signalAll(int signal) const {
    for (const pid_t child : m_children) kill(-child, signal);
}

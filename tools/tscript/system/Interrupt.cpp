#include "system/Interrupt.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <ctime>

#include "system/ChildProcess.h"

namespace {

// Signals that the caller ignores (nohup, a background job of a shell) stay ignored.
sigset_t interruptions() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) sigaddset(&set, signal);
    }
    return set;
}

}  // namespace

InterruptGuard::InterruptGuard() {
    const sigset_t set = interruptions();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
    m_watcher = std::thread(&InterruptGuard::watch, this, gettid());
}

InterruptGuard::~InterruptGuard() {
    m_ending = true;
    pthread_kill(m_watcher.native_handle(), SIGINT);
    m_watcher.join();
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

// After the first signal the children are looked up repeatedly: another one may be about to start.
void InterruptGuard::watch(pid_t parentThread) {
    const sigset_t set = interruptions();
    const timespec pause{0, 100'000'000};
    while (!m_ending) {
        const int signal = sigtimedwait(&set, nullptr, &pause);
        if (m_ending) break;
        if (signal > 0) m_interrupted = true;
        if (!m_interrupted) continue;
        for (const pid_t child : childrenOf(parentThread)) kill(child, SIGTERM);
    }
}

InterruptDelay::InterruptDelay() {
    const sigset_t set = interruptions();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
}

InterruptDelay::~InterruptDelay() {
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

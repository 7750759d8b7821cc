#include "system/Interrupt.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <ctime>
#include <fstream>
#include <string>

namespace {

// One that the caller had ignored (nohup, a shell's background job) stays without effect.
sigset_t interruptions() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) sigaddset(&set, signal);
    }
    return set;
}

// The kernel lists a thread's children only for itself, so nobody else's process can be meant.
void endChildrenOf(int thread) {
    std::ifstream children("/proc/self/task/" + std::to_string(thread) + "/children");
    for (pid_t child = 0; children >> child;) kill(child, SIGTERM);
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

// Once interrupted it looks again and again: a child may be about to start.
void InterruptGuard::watch(int parentThread) {
    const sigset_t set = interruptions();
    const timespec pause{0, 100'000'000};
    while (!m_ending) {
        const int signal = sigtimedwait(&set, nullptr, &pause);
        if (m_ending) break;
        if (signal > 0) m_interrupted = true;
        if (m_interrupted) endChildrenOf(parentThread);
    }
}

InterruptDelay::InterruptDelay() {
    const sigset_t set = interruptions();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
}

InterruptDelay::~InterruptDelay() {
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

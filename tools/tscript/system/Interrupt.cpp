#include "system/Interrupt.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <iterator>
#include <new>

#include "CancelRequests.h"
#include "console/Outcome.h"
#include "system/ChildProcess.h"

namespace {

constexpr std::chrono::seconds kTimeToClose{5};  // of a request that begins after the first signal
constexpr std::chrono::seconds kTimeToEnd{5};    // after the second signal
constexpr std::chrono::seconds kLongestEnd{60};  // after the first signal
// Ends the wait of the watcher, whose thread blocks it: a blocked signal arrives even if it is ignored.
constexpr int kWakeUp = SIGINT;

template <std::size_t size>
[[noreturn]] void endWithNote(const char (&note)[size], ExitCode code) {
    static_cast<void>(!write(STDERR_FILENO, note, size - 1));
    _exit(static_cast<int>(code));
}

// FreeTDS aborts the process, by assert(), on a reply that it does not expect.
bool isFreeTdsOnStack() {
    void* frames[64];
    const int count = backtrace(frames, static_cast<int>(std::size(frames)));
    return std::any_of(frames, frames + count, [](const void* frame) {
        Dl_info info{};
        return dladdr(frame, &info) != 0 && info.dli_fname != nullptr &&
               std::strstr(info.dli_fname, "libtdsodbc") != nullptr;
    });
}

// Returns for other aborts, which then end the process as usual.
void endIfDriverAborts(int) {
    if (isFreeTdsOnStack())
        endWithNote(
            "tscript: the ODBC driver has ended the process, because the server sent a malformed reply\n"
            "A run that had begun stays open in the journal: tscript journal close\n",
            ExitCode::kConnection);
}

[[noreturn]] void endWithoutMemory() {
    try {
        if (std::current_exception()) throw;
    } catch (const std::bad_alloc&) {
        endWithNote(
            "tscript: not enough memory\nA run that had begun stays open in the journal: tscript journal\n",
            ExitCode::kInstallation);
    } catch (...) {
    }
    std::abort();
}

}  // namespace

sigset_t interruptions() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) sigaddset(&set, signal);
    }
    return set;
}

void endWhenMemoryLacks() {
    std::set_terminate(endWithoutMemory);
}

void endWhenDriverFails() {
    isFreeTdsOnStack();  // loads what backtrace() needs; in the handler, malloc() may be locked
    signal(SIGABRT, endIfDriverAborts);
    if (hostlayer::callWhenStuck == nullptr) return;
    hostlayer::callWhenStuck([] {
        endWithNote(
            "tscript: the ODBC driver does not return although the connection to the server is closed\n",
            ExitCode::kConnection);
    });
}

InterruptGuard::InterruptGuard(std::chrono::seconds timeout) : m_timeout(timeout) {
    sigset_t set = interruptions();
    sigaddset(&set, kWakeUp);
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
    m_watcher = std::thread(&InterruptGuard::watch, this, gettid());
    // An ignored SIGINT is blocked in the watcher only. Here it must be discarded, not stay pending.
    set = interruptions();
    if (!sigismember(&set, kWakeUp) && !sigismember(&m_before, kWakeUp)) {
        sigemptyset(&set);
        sigaddset(&set, kWakeUp);
        pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    }
}

InterruptGuard::~InterruptGuard() {
    m_ending = true;
    pthread_kill(m_watcher.native_handle(), kWakeUp);
    m_watcher.join();
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

// After a signal the waits are ended repeatedly: another child or request may be about to start.
void InterruptGuard::watch(pid_t parentThread) {
    const sigset_t set = interruptions();
    sigset_t awaited = set;
    sigaddset(&awaited, kWakeUp);
    const timespec pause{0, 100'000'000};
    while (!m_ending) {
        const int arrived = sigtimedwait(&awaited, nullptr, &pause);
        const int signal = arrived > 0 && sigismember(&set, arrived) ? arrived : 0;
        if (m_ending) break;
        const auto now = Clock::now();
        if (signal > 0 && m_interrupted && !m_second) m_second = now;
        if (signal > 0 && !m_interrupted) m_first = now;
        if (!m_interrupted && signal <= 0 && isTimedOut(now)) {
            m_first = now;
            m_timedOut = m_interrupted = true;
        }
        if (signal > 0) m_interrupted = true;
        if (m_interrupted) endWaits(parentThread);
    }
}

bool InterruptGuard::isTimedOut(Clock::time_point now) const {
    return m_timeout > std::chrono::seconds::zero() && now - m_began > m_timeout;
}

void InterruptGuard::endWaits(pid_t parentThread) const {
    const auto now = Clock::now();
    const auto begunBefore = m_second ? Clock::time_point::max() : std::max(m_first, now - kTimeToClose);
    for (const pid_t child : childrenOf(parentThread)) kill(child, m_second ? SIGKILL : SIGTERM);
    if (hostlayer::cancelRequests != nullptr) hostlayer::cancelRequests(begunBefore);
    const bool isOverdue = now - m_first > kLongestEnd || (m_second && now - *m_second > kTimeToEnd);
    if (isOverdue)
        endWithNote("tscript: interrupted; ended before it could clean up\n", ExitCode::kInterrupted);
}

InterruptDelay::InterruptDelay() {
    const sigset_t set = interruptions();
    pthread_sigmask(SIG_BLOCK, &set, &m_before);
}

InterruptDelay::~InterruptDelay() {
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

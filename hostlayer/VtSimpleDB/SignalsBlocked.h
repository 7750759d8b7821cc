// Signals of the host program.
#pragma once

#include <signal.h>

namespace hostlayer {

// Blocks all signals for the threads that the current one starts: the host program's handlers run in its own
// threads.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t m_before{};
};

}  // namespace hostlayer

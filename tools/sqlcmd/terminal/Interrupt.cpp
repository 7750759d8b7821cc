#include "terminal/Interrupt.h"

namespace sqlcmd {
namespace {

volatile std::sig_atomic_t g_isInterrupted = 0;

extern "C" void receiveInterrupt(int /*signal*/) {
    g_isInterrupted = 1;
}

}  // namespace

InterruptScope::InterruptScope() {
    struct sigaction action {};
    action.sa_handler = receiveInterrupt;  // without SA_RESTART
    sigaction(SIGINT, &action, &m_previous);
}

InterruptScope::~InterruptScope() {
    sigaction(SIGINT, &m_previous, nullptr);
}

bool isInterrupted() {
    return g_isInterrupted != 0;
}

void clearInterrupt() {
    g_isInterrupted = 0;
}

}  // namespace sqlcmd

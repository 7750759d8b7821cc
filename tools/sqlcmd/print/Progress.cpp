#include "print/Progress.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace sqlcmd {

Progress::Progress(bool isEnabled) : m_isEnabled(isEnabled), m_isTerminal(isatty(STDERR_FILENO) != 0) {}

void Progress::beginBatch() {
    const std::string name = "sqlcmd:" + std::to_string(++m_batches);
    ::prctl(PR_SET_NAME, name.c_str());  // what ps, top and tscript show
    m_rows = 0;
    m_start = m_lastPrint = Clock::now();
}

void Progress::update() {
    if (!m_isEnabled || Clock::now() - m_lastPrint < std::chrono::seconds(1)) return;
    m_lastPrint = Clock::now();
    print(m_isTerminal ? "\r" : "\n");
}

void Progress::endBatch() {
    if (m_isEnabled) print("\n");
}

void Progress::print(const char* lineEnd) {
    const double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
    std::fprintf(stderr, "Sqlcmd: batch %d: %lld rows, %.1f s%s", m_batches, m_rows, seconds, lineEnd);
    std::fflush(stderr);
}

}  // namespace sqlcmd

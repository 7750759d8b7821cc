#include "run/Progress.h"

#include <unistd.h>

#include <cstdio>

#include "console/Terminal.h"
#include "console/TextWidth.h"
#include "console/Times.h"
#include "system/ChildProcess.h"

namespace {

constexpr std::chrono::milliseconds kFirstUpdate{500};
constexpr std::chrono::milliseconds kUpdateInterval{200};
constexpr const char* kClearLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::string script, bool isWanted) : m_script(std::move(script)) {
    if (isWanted && isAnsiTerminal(STDERR_FILENO)) m_thread = std::thread(&Progress::update, this, gettid());
}

Progress::~Progress() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_ended.notify_one();
    m_thread.join();
}

double Progress::seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

void Progress::update(pid_t scriptThread) {
    std::unique_lock lock(m_mutex);
    if (m_ended.wait_for(lock, kFirstUpdate, [this] { return m_ending; })) return;
    bool wasStarted = false;
    do {
        const bool isRunning = !childrenOf(scriptThread).empty();  // the query tool is a run's only child
        wasStarted = wasStarted || isRunning;
        draw(isRunning ? "running in the database" : wasStarted ? "reading the output" : "preparing");
    } while (!m_ended.wait_for(lock, kUpdateInterval, [this] { return m_ending; }));
    std::fputs(kClearLine, stderr);
}

// The script's name comes last, because a narrow terminal truncates the line.
void Progress::draw(const char* step) const {
    const std::string text =
        spanText(static_cast<std::int64_t>(seconds())) + "  " + step + "  " + withoutControls(m_script);
    std::fprintf(stderr, "%s%s", kClearLine, truncated(text, terminalWidth(STDERR_FILENO) - 1).c_str());
    std::fflush(stderr);
}

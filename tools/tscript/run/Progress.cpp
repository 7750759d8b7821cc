#include "run/Progress.h"

#include <sys/types.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "console/Terminal.h"
#include "console/TextWidth.h"
#include "console/Times.h"

namespace {

constexpr std::chrono::milliseconds kFirst{500};
constexpr std::chrono::milliseconds kPause{200};
constexpr const char* kClearLine = "\r\x1b[K";

// The query tool is the only child that a run has.
bool hasChild(int thread) {
    std::ifstream children("/proc/self/task/" + std::to_string(thread) + "/children");
    pid_t child = 0;
    return static_cast<bool>(children >> child);
}

}  // namespace

Progress::Progress(std::string script, bool wanted) : m_script(std::move(script)) {
    if (wanted && isLivelyTerminal(STDERR_FILENO)) m_thread = std::thread(&Progress::show, this, gettid());
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

void Progress::show(int scriptThread) {
    std::unique_lock lock(m_mutex);
    if (m_ended.wait_for(lock, kFirst, [this] { return m_ending; })) return;
    bool started = false;
    do {
        const bool running = hasChild(scriptThread);
        started = started || running;
        draw(running ? "running in the database" : started ? "reading the output" : "preparing");
    } while (!m_ended.wait_for(lock, kPause, [this] { return m_ending; }));
    std::fputs(kClearLine, stderr);
}

// The time comes first, so that a narrow terminal cuts what matters least.
void Progress::draw(const char* doing) const {
    const std::string text =
        spanText(static_cast<std::int64_t>(seconds())) + "  " + doing + "  " + cleaned(m_script);
    std::fprintf(stderr, "%s%s", kClearLine, fitted(text, terminalWidth(STDERR_FILENO) - 1).c_str());
    std::fflush(stderr);
}

#include "run/Progress.h"

#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <fstream>
#include <string_view>

#include "console/Console.h"
#include "console/Terminal.h"
#include "console/TextWidth.h"
#include "console/Times.h"
#include "run/FollowedOutput.h"
#include "system/ChildProcess.h"

namespace {

constexpr double kFirstLine = 0.5;  // seconds
constexpr std::chrono::milliseconds kUpdateInterval{100};
constexpr const char* kClearLine = "\r\x1b[K";

// Number of the batch that runs, which the query tool of this package has in its process name
// ("sqlcmd:12"); 0 for another tool.
int batchOf(pid_t tool) {
    constexpr std::string_view kPrefix = "sqlcmd:";
    std::ifstream file("/proc/" + std::to_string(tool) + "/comm");
    std::string name;
    std::getline(file, name);
    int batch = 0;
    if (name.starts_with(kPrefix))
        std::from_chars(name.data() + kPrefix.size(), name.data() + name.size(), batch);
    return batch;
}

}  // namespace

Progress::Progress(std::string script, bool isLineWanted, int batchesBefore, FollowedOutput& output)
    : m_script(std::move(script)),
      m_hasLine(isLineWanted && isAnsiTerminal(STDERR_FILENO)),
      m_batchesBefore(batchesBefore),
      m_output(output) {
    if (m_hasLine || output.isWanted()) m_thread = std::thread(&Progress::update, this, gettid());
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
    bool wasStarted = false;
    while (!m_ended.wait_for(lock, kUpdateInterval, [this] { return m_ending; })) {
        const std::vector<pid_t> children = childrenOf(scriptThread);  // the query tool only
        wasStarted = wasStarted || !children.empty();
        if (!children.empty()) printNewLines(children.front());
        if (!m_hasLine || seconds() < kFirstLine) continue;
        draw(!children.empty() ? stepOf(children.front()) : wasStarted ? "reading the output" : "preparing");
    }
    clear();
}

void Progress::printNewLines(pid_t tool) {
    if (!m_output.isWanted()) return;
    for (;;) {
        const std::string_view lines = m_output.nextLines(tool);
        if (lines.empty()) return;
        clear();
        writeNextLines(lines);
    }
}

std::string Progress::stepOf(pid_t tool) const {
    const int batch = batchOf(tool) - m_batchesBefore;
    return batch > 0 ? "running batch " + std::to_string(batch) : "running in the database";
}

// The script's name comes last, because a narrow terminal truncates the line.
void Progress::draw(const std::string& step) {
    const std::string text =
        spanText(static_cast<std::int64_t>(seconds())) + "  " + step + "  " + withoutControls(m_script);
    std::fprintf(stderr, "%s%s", kClearLine, truncated(text, terminalWidth(STDERR_FILENO) - 1).c_str());
    std::fflush(stderr);
    m_isDrawn = true;
}

void Progress::clear() {
    if (m_isDrawn) std::fputs(kClearLine, stderr);
    m_isDrawn = false;
}

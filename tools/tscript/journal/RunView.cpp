#include "journal/RunView.h"

#include <algorithm>
#include <ctime>
#include <iterator>

namespace {

RunState stateOf(int status) {
    constexpr RunState kStates[] = {RunState::kRunning, RunState::kOk, RunState::kFailed};
    const bool isKnown = status >= 0 && status < static_cast<int>(std::size(kStates));
    return isKnown ? kStates[status] : RunState::kUnknown;
}

}  // namespace

RunView::RunView(const TScriptRun_t& journalRun, double staleHours)
    : run(journalRun), state(stateOf(journalRun.status)) {
    constexpr double kSecondsPerHour = 3600;
    const bool isRunning = state == RunState::kRunning;
    const std::int64_t until = isRunning ? std::time(nullptr) : run.endTime;
    seconds = run.startTime == 0 ? 0 : std::max<std::int64_t>(until - run.startTime, 0);
    if (isRunning && static_cast<double>(seconds) >= staleHours * kSecondsPerHour)
        state = RunState::kAbandoned;
}

const char* nameOf(RunState state) {
    constexpr const char* kNames[] = {"running", "ok", "failed", "abandoned", "unknown"};
    return kNames[static_cast<int>(state)];
}

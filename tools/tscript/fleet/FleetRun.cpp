#include "fleet/FleetRun.h"

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <map>

#include "console/Outcome.h"
#include "system/ChildPool.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kSignalled = 128;  // added to a signal's number

struct Running {
    FleetMember* member;
    Clock::time_point begin;
};

// Creates the folder of a member's files; the label may hold slashes.
void chooseFiles(FleetMember& member, const std::filesystem::path& folder) {
    const std::filesystem::path base = folder / std::filesystem::path(member.store.label).relative_path();
    std::error_code error;
    std::filesystem::create_directories(base.parent_path(), error);
    if (error)
        throw Failure(ExitCode::kInstallation,
                      base.parent_path().string() + " cannot be created: " + error.message());
    member.output = base.string() + ".out";
    member.errors = base.string() + ".err";
}

pid_t startMember(ChildPool& pool, FleetMember& member, const FleetPlan& plan) {
    chooseFiles(member, plan.folder);
    std::vector<std::string> command = {std::filesystem::read_symlink("/proc/self/exe"), "--store",
                                        member.store.file, "--no-input"};
    command.insert(command.end(), plan.command.begin(), plan.command.end());
    return pool.start(command, {.outputFile = member.output, .errorFile = member.errors});
}

void noteEnd(const Running& running, int exitCode) {
    FleetMember& member = *running.member;
    member.exitCode = exitCode;
    member.seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - running.begin).count();
    constexpr int kInterruptedCodes[] = {static_cast<int>(ExitCode::kInterrupted), kSignalled + SIGTERM,
                                         kSignalled + SIGHUP};
    const bool isInterrupted = std::ranges::count(kInterruptedCodes, exitCode) > 0;
    member.result = exitCode == 0   ? FleetResult::kOk
                    : isInterrupted ? FleetResult::kInterrupted
                                    : FleetResult::kFailed;
}

}  // namespace

const char* nameOf(FleetResult result) {
    constexpr const char* kNames[] = {"not run", "ok", "failed", "interrupted"};
    return kNames[static_cast<std::size_t>(result)];
}

bool runFleet(std::vector<FleetMember>& members, const FleetPlan& plan,
              const std::function<bool(const FleetMember&, std::size_t)>& ended) {
    ChildPool pool;
    std::map<pid_t, Running> running;
    bool isStopped = false;
    std::size_t number = 0;
    auto next = members.begin();
    for (;;) {
        while (!isStopped && next != members.end() && running.size() < static_cast<std::size_t>(plan.jobs)) {
            const Running started{&*next, Clock::now()};
            running.emplace(startMember(pool, *next++, plan), started);
        }
        if (running.empty()) return !pool.interrupted();
        const ChildPool::Ended child = pool.waitForOne();
        const auto found = running.find(child.pid);
        noteEnd(found->second, child.exitCode);
        const FleetMember& member = *found->second.member;
        running.erase(found);
        const bool goesOn = ended(member, ++number);
        const bool hasFailed = member.result != FleetResult::kOk && !plan.keepGoing;
        isStopped = isStopped || !goesOn || hasFailed || pool.interrupted();
    }
}

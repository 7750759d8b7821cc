#include "execute/AppLocks.h"

#include <algorithm>

#include "types/Text.h"

namespace tsql {

constexpr std::string_view kModes[] = {"IntentShared", "Shared", "Update", "IntentExclusive", "Exclusive"};
// By mode: which modes, in the same order, other sessions may hold (+).
constexpr std::string_view kCompatible[] = {"++++-", "+++--", "++---", "+--+-", "-----"};
constexpr int kLongestCircle = 64;
constexpr std::chrono::milliseconds kSlice(50);  // between two checks for cancellation

std::optional<std::size_t> lockModeNamed(std::string_view name) {
    for (std::size_t i = 0; i < std::size(kModes); ++i)
        if (sameWord(kModes[i], name)) return i;
    return std::nullopt;
}

std::vector<const void*> AppLocks::blockersOf(const Lock& lock) const {
    std::vector<const void*> blockers;
    for (const auto& held : m_granted)
        if (held.resource == lock.resource && held.session != lock.session &&
            kCompatible[held.mode][lock.mode] == '-')
            blockers.push_back(held.session);
    return blockers;
}

bool AppLocks::waitsFor(const void* session, const void* other, int depth) const {
    const auto waiting = m_waiting.find(session);
    if (waiting == m_waiting.end() || depth > kLongestCircle) return false;
    const auto blockers = blockersOf(*waiting->second);
    return std::ranges::any_of(blockers, [&](const void* blocker) {
        return blocker == other || waitsFor(blocker, other, depth + 1);
    });
}

int AppLocks::acquire(const Lock& lock, std::chrono::milliseconds timeout,
                      const std::function<bool()>& cancelled) {
    using Clock = std::chrono::steady_clock;
    const auto begun = Clock::now();
    std::unique_lock guard(m_mutex);
    int result = 0;
    for (; !blockersOf(lock).empty(); result = 1) {
        m_waiting[lock.session] = &lock;
        const bool timeOver = timeout.count() >= 0 && Clock::now() - begun >= timeout;
        const bool circle = result == 0 && waitsFor(lock.session, lock.session, 0);
        if (!timeOver && !circle) m_released.wait_for(guard, kSlice);
        m_waiting.erase(lock.session);
        if (timeOver) return -1;
        if (circle) return -3;
        if (cancelled()) return -2;
    }
    m_granted.push_back(lock);
    return result;
}

bool AppLocks::release(const std::string& resource, const void* session, bool ofTransaction) {
    const std::lock_guard guard(m_mutex);
    const auto found = std::ranges::find_if(m_granted, [&](const Lock& held) {
        return held.resource == resource && held.session == session && held.ofTransaction == ofTransaction;
    });
    if (found == m_granted.end()) return false;
    m_granted.erase(found);
    m_released.notify_all();
    return true;
}

void AppLocks::releaseAll(const void* session, std::optional<bool> ofTransaction) {
    const std::lock_guard guard(m_mutex);
    std::erase_if(m_granted, [&](const Lock& held) {
        return held.session == session && held.ofTransaction == ofTransaction.value_or(held.ofTransaction);
    });
    m_released.notify_all();
}

}  // namespace tsql

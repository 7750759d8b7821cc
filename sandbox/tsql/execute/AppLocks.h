// Application locks, as sp_getapplock takes them: names that sessions agree on, each held in one of five
// modes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tsql {

enum class LockMode { IntentShared, Shared, Update, IntentExclusive, Exclusive };
std::optional<LockMode> lockModeNamed(std::string_view name);

// Shared by all sessions.
class AppLocks {
  public:
    struct Lock {
        std::string resource;
        LockMode mode;
        const void* session;
        bool ofTransaction;  // ends with the transaction, otherwise with the session
    };
    // 0 at once, 1 after waiting, -1 when the time is over, -2 when `cancelled` says so, -3 when the sessions
    // would wait for each other. A negative time-out waits without end.
    int acquire(const Lock& lock, std::chrono::milliseconds timeout, const std::function<bool()>& cancelled);
    // One of those that the session took; false when there is none.
    bool release(const std::string& resource, const void* session, bool ofTransaction);
    // All of a session, or those of its transaction, or those of its own.
    void releaseAll(const void* session, std::optional<bool> ofTransaction = {});

  private:
    std::vector<const void*> blockersOf(const Lock& lock) const;
    bool waitsFor(const void* session, const void* other, int depth) const;

    std::mutex m_mutex;
    std::condition_variable m_released;
    std::vector<Lock> m_granted;
    std::map<const void*, const Lock*> m_waiting;
};

}  // namespace tsql

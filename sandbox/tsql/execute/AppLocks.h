// Application locks of sp_getapplock: named locks, each held in one of five modes.
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

std::optional<std::size_t> lockModeNamed(std::string_view name);  // in AppLocks.cpp's order of modes

// Lock table shared by all sessions. Thread-safe.
class AppLocks {
  public:
    struct Lock {
        std::string resource;
        std::size_t mode;
        const void* session;
        bool ofTransaction;  // released with the transaction, otherwise with the session
    };
    // Returns 0 if the lock is granted at once, 1 after waiting, -1 on timeout, -2 if `cancelled` returns
    // true, -3 for a deadlock. A negative timeout waits without limit.
    int acquire(const Lock& lock, std::chrono::milliseconds timeout, const std::function<bool()>& cancelled);
    // Releases one lock of the session. Returns false if it holds none.
    bool release(const std::string& resource, const void* session, bool ofTransaction);
    // Releases all locks of a session, only those of its transaction (true), or only its other ones (false).
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

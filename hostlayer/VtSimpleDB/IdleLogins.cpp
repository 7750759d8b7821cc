#include "IdleLogins.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "ProcessStart.h"
#include "SignalsBlocked.h"
#include "SqlEffect.h"

namespace hostlayer {
namespace {

using Clock = std::chrono::steady_clock;

struct Idle {
    std::unique_ptr<Login> login;
    Clock::time_point until;
};
// Moving elements to another list takes no memory: the closing thread and the fork's handler cannot report
// that it is missing.
using Logins = std::list<Idle>;

constexpr std::size_t kMaxIdle = 64;

// The store. A thread closes what has been idle for its time; it ends once it finds no idle login.
// Disconnecting may block, so logins are destroyed without the lock.
class IdleLogins {
  public:
    std::unique_ptr<Login> take(std::string_view connectionString, bool readOnly);
    void keep(std::unique_ptr<Login> login, std::chrono::seconds time);
    Logins removeAll();
    void shutDown();

    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }
    Logins removeAllLocked();

  private:
    std::unique_ptr<Login> remove(std::string_view connectionString, bool readOnly);
    Logins removeExpired(Clock::time_point now);
    bool startCloser();
    void closeExpired();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Logins m_idle;  // the oldest first
    std::optional<std::thread> m_closer;
    Clock::time_point m_closerWakes;
    bool m_closerHasEnded = false;
    bool m_isShutDown = false;
};

std::unique_ptr<Login> IdleLogins::take(std::string_view connectionString, bool readOnly) {
    for (;;) {
        std::unique_ptr<Login> login = remove(connectionString, readOnly);
        if (login == nullptr || login->isAlive()) return login;
    }
}

std::unique_ptr<Login> IdleLogins::remove(std::string_view connectionString, bool readOnly) {
    const std::lock_guard lock(m_mutex);
    const auto now = Clock::now();
    const auto found = std::find_if(m_idle.rbegin(), m_idle.rend(), [&](const Idle& idle) {
        return idle.until > now && idle.login->isFor(connectionString, readOnly);
    });
    if (found == m_idle.rend()) return nullptr;
    std::unique_ptr<Login> login = std::move(found->login);
    m_idle.erase(std::next(found).base());
    return login;
}

void IdleLogins::keep(std::unique_ptr<Login> login, std::chrono::seconds time) {
    std::unique_ptr<Login> notKept;  // disconnected without the lock
    const std::lock_guard lock(m_mutex);
    if (m_isShutDown || !startCloser()) {
        notKept = std::move(login);
        return;
    }
    if (m_idle.size() == kMaxIdle) {
        notKept = std::move(m_idle.front().login);
        m_idle.pop_front();
    }
    const auto until = Clock::now() + time;
    m_idle.push_back({std::move(login), until});
    if (until < m_closerWakes) m_changed.notify_one();  // the setting was lowered
}

Logins IdleLogins::removeAllLocked() {
    return std::exchange(m_idle, {});
}

Logins IdleLogins::removeAll() {
    const std::lock_guard lock(m_mutex);
    return removeAllLocked();
}

void IdleLogins::shutDown() {
    Logins logins;
    std::optional<std::thread> closer;
    {
        const std::lock_guard lock(m_mutex);
        m_isShutDown = true;
        logins = removeAllLocked();
        closer = std::exchange(m_closer, std::nullopt);
        m_changed.notify_one();
    }
    if (closer) closer->join();
}

// Returns whether the thread runs.
bool IdleLogins::startCloser() {
    if (m_closer && !m_closerHasEnded) return true;
    if (m_closer) m_closer->join();
    m_closer.reset();
    m_closerHasEnded = false;
    try {
        const SignalsBlocked signalsBlocked;
        m_closer.emplace([this] { closeExpired(); });
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

Logins IdleLogins::removeExpired(Clock::time_point now) {
    Logins expired;
    for (auto at = m_idle.begin(); at != m_idle.end();) {
        const auto idle = at++;
        if (idle->until <= now) expired.splice(expired.end(), m_idle, idle);
    }
    return expired;
}

void IdleLogins::closeExpired() {
    std::unique_lock lock(m_mutex);
    while (!m_idle.empty()) {
        const auto sooner = [](const Idle& a, const Idle& b) { return a.until < b.until; };
        m_closerWakes = std::min_element(m_idle.begin(), m_idle.end(), sooner)->until;
        m_changed.wait_until(lock, Clock::time_point(m_closerWakes));
        Logins expired = removeExpired(Clock::now());
        lock.unlock();
        expired.clear();
        lock.lock();
    }
    m_closerHasEnded = true;
}

std::atomic<IdleLogins*> processLogins{nullptr};

void closeBeforeFork() {
    IdleLogins& logins = *processLogins;
    logins.lock();
    logins.removeAllLocked();
}

void continueAfterFork() {
    processLogins.load()->unlock();
}

// The child has no closing thread and cannot use what that thread may have held. The store is empty.
void beginAnewInChild() {
    processLogins = new IdleLogins;
}

// Returns the text that the query tool runs, from its option -i or -Q; empty if that is not certain, or the
// text is longer than 256 KiB.
std::string scriptOf(const std::vector<std::string>& arguments) {
    constexpr std::size_t kLongest = std::size_t{256} << 10;
    const auto isScript = [](const std::string& argument) { return argument == "-i" || argument == "-Q"; };
    const auto option = std::find_if(arguments.begin(), arguments.end(), isScript);
    const bool isOnly = std::count_if(arguments.begin(), arguments.end(), isScript) == 1;
    if (!isOnly || option + 1 == arguments.end() || !arguments.front().ends_with("/sqlcmd")) return {};
    if (*option == "-Q") return option[1];
    std::error_code error;
    const auto size = std::filesystem::file_size(option[1], error);  // an error for anything but a file
    if (error || size > kLongest) return {};
    std::string text(size, '\0');
    std::ifstream file(option[1]);
    return file.read(text.data(), static_cast<std::streamsize>(size)) ? text : std::string();
}

void closeBeforeProcess(const std::vector<std::string>& arguments) {
    const std::string script = scriptOf(arguments);
    if (script.empty() || mayNeedDatabaseAlone(script)) closeIdleLogins();
}

// Creates the store. It is never destroyed: connections of static objects may close after it. Its logins are
// closed at exit, which comes before the clean-up of the driver's libraries, since those were loaded earlier.
class StoreCreation {
  public:
    StoreCreation() {
        processLogins = new IdleLogins;
        ::pthread_atfork(closeBeforeFork, continueAfterFork, beginAnewInChild);
        callBeforeProcessStart(closeBeforeProcess);
    }
    ~StoreCreation() {
        callBeforeProcessStart(nullptr);
        processLogins.load()->shutDown();
    }
    StoreCreation(const StoreCreation&) = delete;
    StoreCreation& operator=(const StoreCreation&) = delete;
};

}  // namespace

std::unique_ptr<Login> takeIdleLogin(std::string_view connectionString, bool readOnly) {
    IdleLogins* const logins = processLogins;
    return logins != nullptr ? logins->take(connectionString, readOnly) : nullptr;
}

void keepIdleLogin(std::unique_ptr<Login> login, std::chrono::seconds time) {
    if (time <= std::chrono::seconds::zero() || !login->isReusable()) return;
    static const StoreCreation creation;
    login->requestReset();
    processLogins.load()->keep(std::move(login), time);
}

void closeIdleLogins() {
    if (IdleLogins* const logins = processLogins; logins != nullptr) logins->removeAll();
}

void endIdleSessions() {
    IdleLogins* const logins = processLogins;
    if (logins == nullptr) return;
    for (const Idle& idle : logins->removeAll()) idle.login->endSession();
}

}  // namespace hostlayer

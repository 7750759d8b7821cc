#include "ServerRequest.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "EvDebug.h"
#include "SignalsBlocked.h"
#include "VtCauses.h"

namespace hostlayer {
namespace {

constexpr std::chrono::seconds kMargin{2};         // for the driver to end the request by its own time-out
constexpr std::chrono::seconds kTimeToReturn{10};  // for the driver, after its connection was closed

std::atomic<void (*)()> whenStuck{nullptr};

// Runs a step that is repeated later anyway, on a thread that nothing could report a failure to.
template <typename Step>
void unlessMemoryLacks(Step&& step) noexcept {
    try {
        step();
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

// The requests of this process. A thread enforces their limits; it sleeps while there is no request.
class RequestList {
  public:
    void add(ServerRequest& request, bool isLimited);
    void remove(ServerRequest& request);
    void cancel(ServerRequest::Clock::time_point begunBefore);
    bool areAllCancelled() const { return m_areAllCancelled; }
    void shutDown();

    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }

  private:
    void startWatcher();
    void watch();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<ServerRequest*> m_requests;
    std::optional<std::thread> m_watcher;
    bool m_isAsleep = false;
    bool m_isShutDown = false;
    std::atomic<bool> m_areAllCancelled{false};
};

void RequestList::add(ServerRequest& request, bool isLimited) {
    const std::lock_guard lock(m_mutex);
    const bool isWatched = isLimited && !m_isShutDown;
    if (isWatched && !m_watcher) startWatcher();
    m_requests.push_back(&request);  // last: a request that the list holds must not end by an exception
    if (isWatched && std::exchange(m_isAsleep, false)) m_changed.notify_one();
}

void RequestList::remove(ServerRequest& request) {
    const std::lock_guard lock(m_mutex);
    std::erase(m_requests, &request);
}

void RequestList::cancel(ServerRequest::Clock::time_point begunBefore) {
    const std::lock_guard lock(m_mutex);
    if (begunBefore == ServerRequest::Clock::time_point::max()) m_areAllCancelled = true;
    for (ServerRequest* request : m_requests) request->cancel(begunBefore);
}

void RequestList::shutDown() {
    std::optional<std::thread> watcher;
    {
        const std::lock_guard lock(m_mutex);
        m_isShutDown = true;
        watcher = std::exchange(m_watcher, std::nullopt);
        m_changed.notify_one();
    }
    if (watcher) watcher->join();
}

// Without the thread, the limits of the driver remain.
void RequestList::startWatcher() {
    try {
        const SignalsBlocked signalsBlocked;
        m_watcher.emplace([this] { watch(); });
    } catch (const std::system_error&) {
    }
}

void RequestList::watch() {
    std::unique_lock lock(m_mutex);
    while (!m_isShutDown) {
        m_isAsleep = m_requests.empty();
        if (m_isAsleep) {
            m_changed.wait(lock);
            continue;
        }
        const auto hasShorterTick = [](const ServerRequest* one, const ServerRequest* other) {
            return one->m_limits.tick < other->m_limits.tick;
        };
        m_changed.wait_for(lock, (*std::ranges::min_element(m_requests, hasShorterTick))->m_limits.tick);
        const auto now = ServerRequest::Clock::now();
        for (ServerRequest* request : m_requests)
            unlessMemoryLacks([&] { request->enforceLimits(now); });  // again at the next tick
    }
}

namespace {

// Never destroyed: connections of static objects may run statements after it.
std::atomic<RequestList*> processRequests{nullptr};

// Creates the list; at exit it ends the thread. A child process begins with an empty list and no thread.
class ListCreation {
  public:
    ListCreation() {
        processRequests = new RequestList;
        ::pthread_atfork([] { processRequests.load()->lock(); }, [] { processRequests.load()->unlock(); },
                         [] { processRequests = new RequestList; });
    }
    ~ListCreation() { processRequests.load()->shutDown(); }
    ListCreation(const ListCreation&) = delete;
    ListCreation& operator=(const ListCreation&) = delete;
};

RequestList& requests() {
    static const ListCreation creation;
    return *processRequests;
}

}  // namespace

thread_local ServerRequest::CutRecord ServerRequest::t_lastCut;

ServerRequest::ServerRequest(FindSockets sockets, const RequestLimits& limits)
    : m_sockets(std::move(sockets)), m_limits(limits) {
    if (m_limits.bytes > 0)
        if (const auto found = m_sockets(); found.size() == 1) m_bytesBefore = found.front().bytesReceived();
    const bool isLimited = m_limits.bytes > 0 || m_limits.time > std::chrono::seconds::zero();
    requests().add(*this, isLimited);
    if (requests().areAllCancelled()) m_cut = Cut::kAllCancelled;
}

ServerRequest::~ServerRequest() {
    requests().remove(*this);
}

void ServerRequest::beginCall() {
    m_callBegan = Clock::now().time_since_epoch();
}

void ServerRequest::endCall() {
    m_spent = timeInCalls(Clock::now());
    m_callBegan = Clock::duration::zero();
    if (isCut() || t_lastCut.cut != Cut::kNone) t_lastCut = {m_cut, m_limits};
}

ServerRequest::Clock::duration ServerRequest::timeInCalls(Clock::time_point now) const {
    const Clock::duration began = m_callBegan;
    return m_spent.load() + (began == Clock::duration::zero() ? began : now.time_since_epoch() - began);
}

std::uint64_t ServerRequest::bytesSinceStart(const ServerSocket& socket) const {
    const std::uint64_t received = socket.bytesReceived();
    return received > m_bytesBefore ? received - m_bytesBefore : 0;
}

void ServerRequest::enforceLimits(Clock::time_point now) {
    const bool isWaiting = m_callBegan.load() != Clock::duration::zero();
    if (!isWaiting) return;
    if (m_wasCutAt && now - *m_wasCutAt > kTimeToReturn)
        if (auto* const function = whenStuck.load()) function();
    if (isCut()) return;
    const bool isLate =
        m_limits.time > std::chrono::seconds::zero() && timeInCalls(now) > m_limits.time + kMargin;
    if (!isLate && m_limits.bytes == 0) return;
    const std::vector<ServerSocket> sockets = m_sockets();
    const bool isKnown = sockets.size() == 1;  // of several, one may be another thread's
    const bool isTooLong = m_limits.bytes > 0 && isKnown && bytesSinceStart(sockets.front()) > m_limits.bytes;
    if (!isLate && !isTooLong) return;
    m_cut = isLate ? Cut::kTime : Cut::kBytes;
    m_wasCutAt = now;
    if (isKnown) sockets.front().shutDown();
}

void ServerRequest::cancel(Clock::time_point begunBefore) {
    const bool isWaiting = m_callBegan.load() != Clock::duration::zero();
    if (!isWaiting || m_began >= begunBefore) return;
    m_cut = begunBefore == Clock::time_point::max() ? Cut::kAllCancelled : Cut::kCancelled;
    for (const ServerSocket& socket : m_sockets()) socket.shutDown();
}

std::string ServerRequest::describe(const CutRecord& record) {
    const RequestLimits& limits = record.limits;
    switch (record.cut) {
        case Cut::kTime:
            return "the server has not answered completely within " + std::to_string(limits.time.count()) +
                   " s (" + limits.timeSetting + ")";
        case Cut::kBytes:
            return "the server's answer has more than " + std::to_string(limits.bytes >> 20) + " MiB";
        default:
            return "cancelled while it waited for the server";
    }
}

// The cause of Cut::kAllCancelled is no lost connection: nobody should connect again.
bool ServerRequest::noteCut(const char* action) {
    const CutRecord record = std::exchange(t_lastCut, {});
    if (record.cut == Cut::kNone) return false;
    const char* sqlState = record.cut == Cut::kTime    ? "HYT00"   // time-out expired
                           : record.cut == Cut::kBytes ? "08S01"   // communication failure
                                                       : "HY008";  // operation cancelled
    const VtCause cause{
        .place = record.cut == Cut::kAllCancelled ? VtCause::kStatement : VtCause::kConnection,
        .sqlState = sqlState,
        .text = describe(record) + "; the connection is closed"};
    EvDebug().DebugLevel(kErrorDebugLevel, "%s: %s", action, cause.text.c_str());
    VtNoteCause(cause);
    return true;
}

void cancelRequests(std::chrono::steady_clock::time_point begunBefore) noexcept {
    unlessMemoryLacks([&] { requests().cancel(begunBefore); });
}

void callWhenStuck(void (*function)()) noexcept {
    whenStuck = function;
}

}  // namespace hostlayer

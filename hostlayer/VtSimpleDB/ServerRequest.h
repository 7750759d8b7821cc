// Requests to a server whose waits end: after a limit, or when another thread cancels them.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "CancelRequests.h"
#include "ServerSockets.h"

namespace hostlayer {

struct RequestLimits {
    std::chrono::seconds time{0};         // in the driver's calls together; 0: no limit
    std::uint64_t bytes = 0;              // that the server sends; 0: no limit
    const char* timeSetting = "";         // that sets `time`
    std::chrono::seconds network{0};      // for the acknowledgement of packets; 0: the kernel's limit
    std::chrono::milliseconds tick{100};  // between two checks
};

// One login, or one statement with its results. A request that exceeds its limits, or that is cancelled, is
// cut: its connection is shut down, so that the driver's call returns with an error.
//
// A limit takes effect only if the request's socket is known for sure, that is, if there is exactly one.
class ServerRequest {
  public:
    using FindSockets = std::function<std::vector<ServerSocket>()>;

    // `sockets` is called by another thread until the object is destroyed.
    ServerRequest(FindSockets sockets, const RequestLimits& limits);
    ~ServerRequest();
    ServerRequest(const ServerRequest&) = delete;
    ServerRequest& operator=(const ServerRequest&) = delete;

    // A call of the driver, which lasts as long as the object.
    class Call {
      public:
        explicit Call(ServerRequest& request) : m_request(request) { m_request.beginCall(); }
        ~Call() { m_request.endCall(); }
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

      private:
        ServerRequest& m_request;
    };

    bool isCut() const { return m_cut != Cut::kNone; }

    // If the request of the thread's last call was cut, notes this as the cause of a failure and logs it
    // under the name `action`: once. Otherwise false.
    static bool noteCut(const char* action);

  private:
    friend class RequestList;
    using Clock = std::chrono::steady_clock;
    enum class Cut { kNone, kTime, kBytes, kCancelled, kAllCancelled };
    struct CutRecord {
        Cut cut = Cut::kNone;
        RequestLimits limits;
    };

    static std::string describe(const CutRecord& record);
    void beginCall();
    void endCall();
    void enforceLimits(Clock::time_point now);
    void cancel(Clock::time_point begunBefore);
    Clock::duration timeInCalls(Clock::time_point now) const;
    std::uint64_t bytesSinceStart(const ServerSocket& socket) const;

    const FindSockets m_sockets;
    const RequestLimits m_limits;
    const Clock::time_point m_began = Clock::now();
    std::uint64_t m_bytesBefore = 0;
    std::atomic<Clock::duration> m_spent{Clock::duration::zero()};
    std::atomic<Clock::duration> m_callBegan{Clock::duration::zero()};  // since the clock's epoch; 0: no call
    std::atomic<Cut> m_cut{Cut::kNone};
    std::optional<Clock::time_point> m_wasCutAt;  // by enforceLimits()
    static thread_local CutRecord t_lastCut;      // of the thread's last call
};

}  // namespace hostlayer

// What a test sees of the server from outside: its memory and threads, and whether it still serves.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "RawClient.h"
#include "TsqlBox.h"

namespace support {

inline constexpr std::size_t kMebibyte = std::size_t{1} << 20;

// The memory that a server holds, in bytes. Under the sanitizers, whose runtimes keep what is given back, it
// does not count as grown.
class ServerMemory {
  public:
    explicit ServerMemory(const TsqlBox& box);  // from here on
    std::size_t growth() const;                 // beyond what it was
    std::size_t peakGrowth() const;             // the most that it has been beyond that

  private:
    std::size_t beyond(const std::string& figure) const;

    pid_t m_pid;
    std::size_t m_before;
};

std::size_t threadsOf(const TsqlBox& box);
// Asks again and again, for a minute at most.
bool becomesTrue(const std::function<bool()>& condition);

inline constexpr std::uint8_t kSqlBatch = 1, kRpc = 3, kAttention = 6, kTransaction = 14, kLogin7 = 16,
                              kPrelogin = 18;

std::unique_ptr<RawClient> loggedIn(const TsqlBox& box);
void ask(RawClient& client, const std::string& sql);
// The status of the answer's end: 0x10 for rows and no error, 2 among its bits for an error.
unsigned answer(RawClient& client);
// Whether a client gets its answer, and whether a new one does.
bool isServed(RawClient& client);
bool stillServes(const TsqlBox& box);

}  // namespace support

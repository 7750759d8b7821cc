// View of a server from outside: its memory, its threads, its answers.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "RawClient.h"
#include "TsqlBox.h"

namespace support {

inline constexpr std::size_t kMebibyte = std::size_t{1} << 20;

// Resident memory of a server, in bytes. Growth is 0 under the sanitizers, whose runtimes keep freed memory.
class ServerMemory {
  public:
    explicit ServerMemory(const TsqlBox& box);  // starts measuring
    std::size_t growth() const;                 // since the start
    std::size_t peakGrowth() const;             // highest since the start

  private:
    std::size_t beyond(const std::string& figure) const;

    pid_t m_pid;
    std::size_t m_before;
};

std::size_t threadsOf(const TsqlBox& box);
// Polls the condition for up to a minute.
bool becomesTrue(const std::function<bool()>& condition);

inline constexpr unsigned kErrorBit = 0x02;  // of the status of a DONE token

std::unique_ptr<RawClient> loggedIn(const TsqlBox& box);
void ask(RawClient& client, const std::string& sql);
// Final DONE status of the response: 0x10 after rows without an error; kErrorBit is set after an error.
unsigned answer(RawClient& client);
// Whether a query succeeds on this connection, and on a new one.
bool isServed(RawClient& client);
bool stillServes(const TsqlBox& box);

}  // namespace support

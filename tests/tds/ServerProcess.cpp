#include "ServerProcess.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace support {
namespace {

constexpr unsigned kRowsWithoutError = 0x10;

// Value of a field in /proc/PID/status.
std::size_t statusOf(pid_t pid, const std::string& name) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string word; status >> word;) {
        std::size_t number = 0;
        if (word == name && status >> number) return number;
    }
    throw std::runtime_error("the server has ended");
}

}  // namespace

// Writing 5 to clear_refs resets the peak (VmHWM).
ServerMemory::ServerMemory(const TsqlBox& box) : m_pid(box.pid()) {
    std::ofstream("/proc/" + std::to_string(m_pid) + "/clear_refs") << 5 << std::flush;
    m_before = statusOf(m_pid, "VmRSS:") * 1024;
}

std::size_t ServerMemory::growth() const {
    return beyond("VmRSS:");
}

std::size_t ServerMemory::peakGrowth() const {
    return beyond("VmHWM:");
}

std::size_t ServerMemory::beyond(const std::string& figure) const {
    const std::size_t bytes = statusOf(m_pid, figure) * 1024;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 0;
#endif
    return bytes > m_before ? bytes - m_before : 0;
}

std::size_t threadsOf(const TsqlBox& box) {
    return statusOf(box.pid(), "Threads:");
}

bool becomesTrue(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

std::unique_ptr<RawClient> loggedIn(const TsqlBox& box) {
    auto client = std::make_unique<RawClient>(box.port());
    if (!client->logIn(box.login(), box.password())) throw std::runtime_error("the login was refused");
    return client;
}

void ask(RawClient& client, const std::string& sql) {
    client.send(packet(kSqlBatch, batchPacket(sql)));
}

unsigned answer(RawClient& client) {
    return finalStatus(client.response());
}

bool isServed(RawClient& client) {
    ask(client, "SELECT 1");
    return answer(client) == kRowsWithoutError;
}

bool stillServes(const TsqlBox& box) {
    return isServed(*loggedIn(box));
}

}  // namespace support

#include "catalogue/FirstRunLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace {

constexpr std::chrono::milliseconds kInterval{10};
constexpr int kMostAttempts = 1000;

}  // namespace

FirstRunLock::FirstRunLock(const std::string& package) : m_file(package.c_str(), O_RDONLY | O_NONBLOCK) {
    if (!m_file.isOpen()) return;
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        const bool isHeldElsewhere = flock(m_file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        if (!isHeldElsewhere) return;  // locked, or on a file system without locks
        std::this_thread::sleep_for(kInterval);
    }
}

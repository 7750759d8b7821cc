#include "system/ResultFile.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "console/Console.h"
#include "console/Outcome.h"

namespace {

namespace fs = std::filesystem;

constexpr int kReaderTime = 10;  // seconds

[[noreturn]] void throwUnwritable(const std::string& target, int error) {
    throw Failure(ExitCode::kInstallation, target + " cannot be written: " + std::strerror(error));
}

// Waits for the reader of a pipe.
bool isWritable(int fd) {
    pollfd wanted{fd, POLLOUT, 0};
    if (poll(&wanted, 1, kReaderTime * 1000) > 0) return true;
    errno = ETIMEDOUT;
    return false;
}

// A pipe that nobody reads is waited for; an open that blocks would wait without a limit.
int openForWriting(const std::string& path) {
    for (int second = 0;; ++second) {
        const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
        if (fd >= 0 || errno != ENXIO || second == kReaderTime) return fd;
        sleep(1);
    }
}

bool writeAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written < 0 && (errno == EINTR || (errno == EAGAIN && isWritable(fd)))) continue;
        if (written < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

// Resolves links, so that a link stays and its file is replaced. "/dev/stdout" is not resolved: with standard
// output redirected to a file, the file would be replaced instead of written.
ResultFile::ResultFile(const std::string& file) {
    if (file.empty() || file == "/dev/stdout") return;
    std::error_code ignored;
    const fs::path resolved = fs::weakly_canonical(file, ignored);
    m_target = resolved.empty() ? file : resolved.string();
    if (fs::is_directory(m_target, ignored)) throwUnwritable(m_target, EISDIR);
    if (!fs::exists(m_target, ignored) || fs::is_regular_file(m_target, ignored)) m_scratch.emplace(m_target);
}

void ResultFile::write(std::string_view text) {
    if (isStandardOutput()) return writeResult(text);
    const std::string lineBreak = text.empty() || text.back() == '\n' ? "" : "\n";
    const int fd = openForWriting(m_scratch ? m_scratch->path() : m_target);
    const bool written = fd >= 0 && writeAll(fd, text) && writeAll(fd, lineBreak);
    int error = errno;
    const bool closed = fd >= 0 && close(fd) == 0;
    if (written && !closed) error = errno;
    if (!written || !closed) throwUnwritable(m_target, error);
    if (!m_scratch) return;
    std::error_code ignored;
    if (fs::exists(m_target, ignored)) {
        m_scratch->replace(m_target);
    } else {
        m_scratch->moveTo(m_target);
    }
}

#include "FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace hostlayer {

ssize_t readUpTo(int file, unsigned char* bytes, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t got = ::read(file, bytes + filled, size - filled);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        filled += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(filled);
}

bool writeAll(int file, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t put = ::write(file, bytes, size);
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return false;
        bytes += put;
        size -= static_cast<std::size_t>(put);
    }
    return true;
}

bool readBounded(const std::string& path, std::size_t limit, std::string& text, std::string& problem) {
    // Not blocking: a pipe put in the file's place must not hold the process up.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        problem = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        problem = "not a regular file";
        return false;
    }
    text.clear();
    char chunk[16384];
    for (;;) {
        const ssize_t got = ::read(file.get(), chunk, sizeof chunk);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            problem = std::strerror(errno);
            return false;
        }
        if (got == 0) return true;
        text.append(chunk, static_cast<std::size_t>(got));
        if (text.size() > limit) {
            problem = "larger than " + std::to_string(limit) + " bytes";
            return false;
        }
    }
}

}  // namespace hostlayer

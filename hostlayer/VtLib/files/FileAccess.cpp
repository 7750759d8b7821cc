#include "files/FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace hostlayer {

Descriptor openWithoutBlocking(const std::string& path) {
    return Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

ssize_t readUpTo(int file, unsigned char* bytes, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t count = ::read(file, bytes + filled, size - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return -1;
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

bool writeAll(int file, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::write(file, bytes, size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool readBounded(const std::string& path, std::size_t limit, std::string& text, std::string& problem) {
    const Descriptor file = openWithoutBlocking(path);
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
        const ssize_t count = ::read(file.get(), chunk, sizeof chunk);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            problem = std::strerror(errno);
            return false;
        }
        if (count == 0) return true;
        text.append(chunk, static_cast<std::size_t>(count));
        if (text.size() > limit) {
            problem = "larger than " + std::to_string(limit) + " bytes";
            return false;
        }
    }
}

bool reportErrno(std::string& problem, const std::string& path) {
    problem = "[" + path + "]: " + std::strerror(errno);
    return false;
}

}  // namespace hostlayer

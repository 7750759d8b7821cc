// File descriptors: owner, open of a regular file, complete write.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

// Whether both paths lead to one file, through links, too. False if either cannot be inspected.
inline bool isSameFile(const char* path, const char* otherPath) {
    struct stat one {
    }, other{};
    return ::stat(path, &one) == 0 && ::stat(otherPath, &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

// Move-only owner; closes the descriptor. Child processes do not inherit it.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    // Calls open(2); !isOpen() and errno on failure.
    FileDescriptor(const char* path, int flags, mode_t permissions = 0)
        : m_descriptor(::open(path, flags | O_CLOEXEC, permissions)) {}
    // Owner of an open descriptor; negative: of none.
    static FileDescriptor adopt(int descriptor) {
        FileDescriptor file;
        file.m_descriptor = descriptor;
        return file;
    }
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen()) ::close(m_descriptor);
    }

    // A second descriptor of the same file; both share one position. !isOpen() and errno on failure.
    FileDescriptor duplicate() const {
        FileDescriptor second;
        second.m_descriptor = ::fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0);
        return second;
    }
    int release() { return std::exchange(m_descriptor, -1); }

    bool isOpen() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

  private:
    int m_descriptor = -1;
};

// Opens a file that others may have put in place of the expected one. Follows no link, does not wait for a
// pipe, and refuses what is not a regular file with one name: !isOpen(), with errno ELOOP for a link, EMLINK
// for a file with a second name, EINVAL for anything else.
inline FileDescriptor openPlainFile(const char* path, int access) {
    FileDescriptor file(path, access | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (!file.isOpen()) return file;
    int problem = 0;
    if (::fstat(file.get(), &status) != 0)
        problem = errno;
    else if (!S_ISREG(status.st_mode))
        problem = EINVAL;
    else if (status.st_nlink > 1)
        problem = EMLINK;
    if (problem == 0) return file;
    file = FileDescriptor();
    errno = problem;
    return file;
}

// Writes all bytes, after short writes and interruptions, too. False, with errno, on a failure.
inline bool writeAll(const FileDescriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written == 0) errno = EIO;  // a device that accepts no bytes would keep the loop running
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

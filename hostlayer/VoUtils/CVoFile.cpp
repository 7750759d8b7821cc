#include "CVoFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

constexpr mode_t kNewFileMode = 0666;  // the one fopen() uses, reduced by the umask

// Returns the open(2) flags of an fopen() mode, or -1 for an invalid mode.
int flagsOfMode(std::string_view mode) {
    if (mode.empty()) return -1;
    bool update = false;
    for (const char option : mode.substr(1)) {
        if (option != '+' && option != 'b') return -1;
        update = update || option == '+';
    }
    const int access = update ? O_RDWR : O_WRONLY;
    switch (mode.front()) {
        case 'r':
            return update ? O_RDWR : O_RDONLY;
        case 'w':
            return access | O_CREAT | O_TRUNC;
        case 'a':
            return access | O_CREAT | O_APPEND;
        default:
            return -1;
    }
}

int openRetryingOnSignals(const char* path, int flags, mode_t permissions) {
    int descriptor = -1;
    do {
        descriptor = ::open(path, flags | O_CLOEXEC, permissions);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

}  // namespace

const char* CVoError::AsString() const {
    if (const char* known = ::strerrordesc_np(m_code)) return known;
    m_text = "Unknown error " + std::to_string(m_code);
    return m_text.c_str();
}

CVoFile::~CVoFile() {
    if (m_descriptor >= 0) ::close(m_descriptor);
}

CVoError CVoFile::Open(const char* path, const char* mode) {
    const int flags = path != nullptr && mode != nullptr ? flagsOfMode(mode) : -1;
    if (flags < 0) return CVoError(EINVAL);
    if (m_descriptor >= 0) Close();
    m_descriptor = openRetryingOnSignals(path, flags, kNewFileMode);
    return CVoError(m_descriptor < 0 ? errno : 0);
}

CVoError CVoFile::Open(const char* path, int flags, int permissions) {
    if (path == nullptr) return CVoError(EINVAL);
    if (m_descriptor >= 0) Close();
    if ((flags & O_CREAT) != 0) flags |= O_EXCL | O_NOFOLLOW;
    m_descriptor = openRetryingOnSignals(path, flags, static_cast<mode_t>(permissions));
    return CVoError(m_descriptor < 0 ? errno : 0);
}

CVoError CVoFile::Read(void* buffer, std::size_t size, std::size_t* bytesRead) {
    if (bytesRead == nullptr || (buffer == nullptr && size > 0)) return CVoError(EINVAL);
    *bytesRead = 0;
    while (*bytesRead < size) {
        const ssize_t count =
            ::read(m_descriptor, static_cast<char*>(buffer) + *bytesRead, size - *bytesRead);
        if (count > 0) *bytesRead += static_cast<std::size_t>(count);
        if (count == 0) break;
        if (count < 0 && errno != EINTR) return CVoError(errno);
    }
    return CVoError();
}

CVoError CVoFile::Write(const void* data, std::size_t size) {
    if (data == nullptr && size > 0) return CVoError(EINVAL);
    if (m_descriptor < 0) return CVoError(EBADF);
    const char* rest = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t count = ::write(m_descriptor, rest, size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return CVoError(errno);
        if (count == 0) return CVoError(EIO);  // a device that accepts no bytes would keep the loop running
        rest += count;
        size -= static_cast<std::size_t>(count);
    }
    return CVoError();
}

CVoError CVoFile::Close() {
    if (m_descriptor < 0) return CVoError(EBADF);
    const int result = ::close(m_descriptor);
    m_descriptor = -1;
    // On Linux close() releases the descriptor even when a signal interrupts it. Calling it again could close
    // a file that another thread has opened in between.
    return CVoError(result != 0 && errno != EINTR ? errno : 0);
}

CVoError CVoFile::Delete(const char* path, bool missingIsFine) {
    if (path == nullptr) return CVoError(EINVAL);
    if (::unlink(path) == 0 || (missingIsFine && errno == ENOENT)) return CVoError();
    return CVoError(errno);
}

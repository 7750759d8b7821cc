#include "system/ScratchFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "console/Outcome.h"

namespace {

constexpr std::size_t kMostContent = std::size_t{64} << 10;

[[noreturn]] void fail(const std::string& what) {
    throw Failure(ExitCode::kInstallation, what + ": " + std::strerror(errno));
}

mode_t ordinaryMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

ScratchFile::ScratchFile() {
    const char* folder = std::getenv("TMPDIR");
    create(std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + "/tscript.XXXXXX");
}

ScratchFile::ScratchFile(const std::string& beside) {
    m_delay.emplace();
    create(beside + ".XXXXXX");
}

void ScratchFile::create(std::string pattern) {
    const int fd = mkostemp(pattern.data(), O_CLOEXEC);
    if (fd < 0) fail("a file cannot be made as " + pattern);
    close(fd);
    m_path = std::move(pattern);
}

ScratchFile::~ScratchFile() {
    if (!m_path.empty()) unlink(m_path.c_str());
}

std::string ScratchFile::content() const {
    std::ifstream in(m_path, std::ios::binary);
    std::string text(kMostContent, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    return text;
}

void ScratchFile::moveTo(const std::string& target) {
    if (chmod(m_path.c_str(), ordinaryMode()) != 0) fail(m_path + " cannot be given its rights");
    renameTo(target);
}

void ScratchFile::replace(const std::string& target) {
    struct stat status {};
    if (stat(target.c_str(), &status) != 0) fail(target + " cannot be looked at");
    const bool own = status.st_uid == geteuid() && status.st_gid == getegid();
    if ((!own && chown(m_path.c_str(), status.st_uid, status.st_gid) != 0) ||
        chmod(m_path.c_str(), status.st_mode & 07777) != 0)
        fail(m_path + " cannot be given the rights of " + target);
    renameTo(target);
}

void ScratchFile::renameTo(const std::string& target) {
    const int fd = open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool onDisk = fd >= 0 && fsync(fd) == 0;
    const int error = errno;
    if (fd >= 0) close(fd);
    errno = error;
    if (!onDisk) fail(m_path + " cannot be brought to disk");
    if (std::rename(m_path.c_str(), target.c_str()) != 0) fail(target + " cannot be written");
    m_path.clear();
}

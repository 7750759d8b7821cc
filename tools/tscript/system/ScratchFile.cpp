#include "system/ScratchFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "console/Outcome.h"

namespace {

constexpr std::size_t kMostContent = std::size_t{64} << 10;

[[noreturn]] void throwWithErrno(const std::string& what) {
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

// A rename would replace a device or a pipe, too.
ScratchFile::ScratchFile(const std::string& target) {
    std::error_code ignored;
    if (std::filesystem::exists(target, ignored) && !std::filesystem::is_regular_file(target, ignored))
        throw Failure(ExitCode::kInstallation, target + " cannot be written: it is not a regular file");
    m_delay.emplace();
    create(target + ".XXXXXX");
}

void ScratchFile::create(std::string pattern) {
    const int fd = mkostemp(pattern.data(), O_CLOEXEC);
    if (fd < 0) throwWithErrno("cannot create a file " + pattern);
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

void ScratchFile::write(std::string_view text) const {
    std::ofstream out(m_path, std::ios::binary);
    out << text << std::flush;
    if (!out) throwWithErrno(m_path + " cannot be written");
}

void ScratchFile::moveTo(const std::string& target) {
    if (chmod(m_path.c_str(), ordinaryMode()) != 0) throwWithErrno("cannot set the mode of " + m_path);
    renameTo(target);
}

void ScratchFile::replace(const std::string& target) {
    struct stat status {};
    if (stat(target.c_str(), &status) != 0) throwWithErrno("cannot read the attributes of " + target);
    const bool isOwn = status.st_uid == geteuid() && status.st_gid == getegid();
    if ((!isOwn && chown(m_path.c_str(), status.st_uid, status.st_gid) != 0) ||
        chmod(m_path.c_str(), status.st_mode & 07777) != 0)
        throwWithErrno("cannot copy mode and owner of " + target + " to " + m_path);
    renameTo(target);
}

void ScratchFile::renameTo(const std::string& target) {
    const int fd = open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool onDisk = fd >= 0 && fsync(fd) == 0;
    const int error = errno;
    if (fd >= 0) close(fd);
    errno = error;
    if (!onDisk) throwWithErrno("cannot sync " + m_path);
    if (std::rename(m_path.c_str(), target.c_str()) != 0) throwWithErrno(target + " cannot be written");
    m_path.clear();
}

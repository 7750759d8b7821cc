#include "doctor/ProbeFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

ProbeFile::ProbeFile(const std::string& folder, std::string_view text)
    : m_path(folder + "/tscript-doctor.XXXXXX") {
    const int fd = mkostemp(m_path.data(), O_CLOEXEC);
    if (fd < 0) throw std::system_error(errno, std::generic_category());
    int error = 0;
    while (error == 0 && !text.empty()) {
        const ssize_t written = write(fd, text.data(), text.size());
        if (written < 0) error = errno;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
    if (close(fd) != 0 && error == 0) error = errno;
    if (error == 0) return;
    unlink(m_path.c_str());
    throw std::system_error(error, std::generic_category());
}

ProbeFile::~ProbeFile() {
    unlink(m_path.c_str());
}

std::string ProbeFile::content() const {
    std::ifstream in(m_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

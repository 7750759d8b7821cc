#include "files/RunMark.h"

#include <sys/file.h>
#include <sys/xattr.h>

RunMark::RunMark(const std::string& path) : m_file(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK) {
    if (!m_file.isOpen() || flock(m_file.get(), LOCK_EX | LOCK_NB) != 0) return;
    fsetxattr(m_file.get(), kRunAttribute, "1", 1, 0);  // not every file system has attributes
}

void RunMark::remove() {
    if (m_file.isOpen()) fremovexattr(m_file.get(), kRunAttribute);
}

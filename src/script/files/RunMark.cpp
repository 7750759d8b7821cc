#include "files/RunMark.h"

#include <sys/file.h>
#include <sys/xattr.h>

RunMark::RunMark(const std::string& path) : m_file(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK) {
    if (!m_file.isOpen()) return;
    if (flock(m_file.get(), LOCK_EX | LOCK_NB) == 0)
        fsetxattr(m_file.get(), kRunAttribute, "1", 1, 0);  // not every file system has attributes
    else
        m_file = FileDescriptor();
}

void RunMark::remove() {
    if (isHeld()) fremovexattr(m_file.get(), kRunAttribute);
}

// Mark of a file that belongs to a run: `tscript tidy` deletes marked files whose run has died.
#pragma once

#include <string>

#include "FileDescriptor.h"

// Attribute of a marked file. A run holds a flock() on its files as long as it lives, so that a marked file
// without a lock is a dead run's.
inline constexpr char kRunAttribute[] = "user.dvutilities.run";

class RunMark {
  public:
    RunMark() = default;
    // Marks and locks an existing file of this process. A file that another object has locked, or that cannot
    // be opened, stays as it is: isHeld() is false then.
    explicit RunMark(const std::string& path);
    bool isHeld() const { return m_file.isOpen(); }
    // Removes the mark of a file that is to stay.
    void remove();

  private:
    FileDescriptor m_file;  // holds the lock
};

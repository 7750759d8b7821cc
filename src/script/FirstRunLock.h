// Lock that makes simultaneous first runs of a package on one host add one row to the catalogue.
#pragma once

#include <string>

#include "FileDescriptor.h"

// Locks the package's file until the object is destroyed. Waits up to 10 seconds; a lock that cannot be had
// by then, or a file that cannot be opened, is no reason not to run: the catalogue allows several rows of a
// name.
class FirstRunLock {
  public:
    explicit FirstRunLock(const std::string& package);

  private:
    FileDescriptor m_file;
};

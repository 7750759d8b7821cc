// Lock that makes simultaneous first runs of a package on one host add one row to the catalogue.
#pragma once

#include <string>

#include "FileDescriptor.h"

// Locks the package's file until the object is destroyed. Waits up to 10 seconds for the lock. If the wait
// times out, or the file cannot be opened or locked, the run goes on without a lock: the catalogue allows
// several rows with the same name.
class FirstRunLock {
  public:
    explicit FirstRunLock(const std::string& package);

  private:
    FileDescriptor m_file;
};

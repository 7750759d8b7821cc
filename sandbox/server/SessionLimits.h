// Bounds of a session, which has a thread of its own.
#pragma once

#include <cstddef>

namespace server {

// Counts the memory of each thread and the files that SQLite writes when it sorts or keeps more than fits
// into its cache. To be called before SQLite is used.
void countResources();

// From now on, an allocation of this thread beyond the limit fails: std::bad_alloc, or SQLITE_NOMEM. Small
// ones have a reserve, so that the failure can be handled. What would make the temporary files of the thread
// larger than their limit fails with SQLITE_FULL.
void limitThread(std::size_t bytesOfMemory, std::size_t bytesOfFiles);

}  // namespace server

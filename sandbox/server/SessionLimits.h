// Bounds of a session, which has a thread of its own. The first two functions are called before SQLite is
// used.
#pragma once

#include <cstddef>

namespace server {

void countMemoryOfSqlite();
void countTemporaryFiles();  // files that SQLite writes when it sorts or keeps more than fits into its cache

// From now on, an allocation of this thread beyond the limit fails: std::bad_alloc, or SQLITE_NOMEM. Small
// ones have a reserve, so that the failure can be handled.
void limitMemoryOfThread(std::size_t bytes);
// From now on, the temporary files of this thread have at most this size together: what would exceed it fails
// with SQLITE_FULL.
void limitTemporaryFilesOfThread(std::size_t bytes);

}  // namespace server

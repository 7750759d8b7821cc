// Bound of a session's temporary files, which SQLite writes when it sorts or keeps more than fits into its
// cache.
#pragma once

#include <cstddef>

namespace server {

void countTemporaryFiles();  // to be called before SQLite is used

// From now on, the temporary files of this thread have at most this size together: what would exceed it fails
// with SQLITE_FULL.
void limitTemporaryFilesOfThread(std::size_t bytes);

}  // namespace server

// Bound of a session's memory: the allocations of its thread, those of SQLite included.
#pragma once

#include <cstddef>

namespace server {

void countMemoryOfSqlite();  // to be called before SQLite is used

// From now on, an allocation of this thread beyond the limit fails: std::bad_alloc, or SQLITE_NOMEM. Small
// ones have a reserve, so that the failure can be handled.
void limitMemoryOfThread(std::size_t bytes);

}  // namespace server

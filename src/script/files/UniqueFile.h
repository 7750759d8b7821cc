// Files under new, unique names.
#pragma once

#include <functional>
#include <string>

#include "FileDescriptor.h"

class CVoError;
class CVoFile;

// Builds paths until one does not exist and `create` succeeds for it, at most 100 times. Existing paths are
// skipped silently. `path` receives the last path tried, whatever the result.
bool tryPaths(std::string& path, const std::function<std::string()>& nextPath,
              const std::function<bool()>& create);

// The following functions create a file exclusively and readable by its owner only, so that no existing file
// or link is opened in its place.

// Creates a file at the first free path and opens it with `access` (O_RDONLY, O_WRONLY). Calls `failed` for
// every path that cannot be created.
bool createUnique(CVoFile& file, int access, std::string& path, const std::function<std::string()>& nextPath,
                  const std::function<void(const CVoError&)>& failed);

// Creates a file to write and read back. !isOpen() and errno on failure.
FileDescriptor createPrivateFile(const char* path);

// Opens and empties an existing private file of the process's user. !isOpen() for anything else: a link,
// another user's file, a file that others may read.
FileDescriptor openPrivateFile(const char* path);

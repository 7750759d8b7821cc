// Files under names that nobody else has.
#pragma once

#include <functional>
#include <string>

#include "FileDescriptor.h"

class CVoError;
class CVoFile;

// Builds paths until one of them does not exist and `create` has made it, at most 100 times. One that exists
// is passed over in silence. `path` is the last path tried, whatever the result.
bool tryPaths(std::string& path, const std::function<std::string()>& nextPath,
              const std::function<bool()>& create);

// Files are made exclusively, readable by their owner only, so that neither another's file nor a link is
// opened in their place.

// One of those paths; `file` holds it, open with `access` (O_RDONLY, O_WRONLY). `failed` hears of every path
// that could not be created.
bool createUnique(CVoFile& file, int access, std::string& path, const std::function<std::string()>& nextPath,
                  const std::function<void(const CVoError&)>& failed);

// To write and to read back; !isOpen() and errno on failure.
FileDescriptor createPrivateFile(const char* path);

// An existing private file of the process's own user, emptied. !isOpen() for anything else: a link, another's
// file, one that others may read.
FileDescriptor takePrivateFile(const char* path);

// Reading and writing whole files of limited size.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "files/Descriptor.h"

namespace hostlayer {

// Opens a file for reading. A pipe without a writer does not block. Empty, with errno, on a failure.
Descriptor openWithoutBlocking(const std::string& path);

// Reads until `size` bytes are read or the file ends. Returns the number of bytes; -1, with errno, on a
// failure.
ssize_t readUpTo(int file, unsigned char* bytes, std::size_t size);

// Writes all of the bytes. False, with errno, on a failure.
bool writeAll(int file, const char* bytes, std::size_t size);

// Reads a whole regular file into `text`. False, with the reason in `problem`, on a failure or when the file
// has more than `limit` bytes.
bool readBounded(const std::string& path, std::size_t limit, std::string& text, std::string& problem);

// Sets `problem` to the path and errno's text. Returns false, for the caller to return.
bool reportErrno(std::string& problem, const std::string& path);

}  // namespace hostlayer

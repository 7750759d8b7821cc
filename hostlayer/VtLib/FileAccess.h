// Small files and descriptors, read and written whole.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "Descriptor.h"

namespace hostlayer {

// Reads up to `size` bytes. Returns their number, fewer at the end of the file; -1 with errno on a failure.
ssize_t readUpTo(int file, unsigned char* bytes, std::size_t size);

// Writes all of the bytes. False with errno otherwise.
bool writeAll(int file, const char* bytes, std::size_t size);

// Makes `text` the whole of a file of at most `limit` bytes; false and the reason otherwise.
bool readBounded(const std::string& path, std::size_t limit, std::string& text, std::string& problem);

}  // namespace hostlayer

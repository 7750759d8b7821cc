// SHA-256 as 64 hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

#include "FileDescriptor.h"

std::string sha256Of(std::string_view text);
// Hash of an open file's content; empty if it cannot be read. The file's position stays.
std::string sha256OfFile(const FileDescriptor& file);

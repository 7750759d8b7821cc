// SHA-256 as 64 hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

std::string sha256Of(std::string_view text);
// Hash of a regular file's content; empty for anything else (reading a pipe would empty it), and if the file
// cannot be read.
std::string sha256OfFile(const char* path);

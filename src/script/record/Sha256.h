// SHA-256 as 64 hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

std::string sha256Of(std::string_view text);
// Hash of a file's content; empty if the file cannot be read.
std::string sha256OfFile(const char* path);

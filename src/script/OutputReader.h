// Reader of the query tool's output files.
#pragma once

#include <cstddef>
#include <string>

class CVoFile;

// Appends what is left of an open file to `text`, `chunk` bytes at a time, until a read fails or the file
// ends. Every byte counts, NUL bytes included. `path` serves to make room once for the whole.
void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text);

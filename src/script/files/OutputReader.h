// Reader of the query tool's output files.
#pragma once

#include <cstddef>
#include <string>

class CVoFile;

// Appends the rest of an open file to `text`, `chunk` bytes at a time, until a read fails, which is noted as
// a cause and is no failure of the run, or the file ends.
// Each chunk ends at its first NUL byte, so that text behind it, the closing messages above all, stays
// visible. `path` is the file's path; its size is reserved at once.
void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text);

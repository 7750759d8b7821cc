// Reader of the query tool's output files.
#pragma once

#include <cstddef>
#include <string>

class CVoFile;

// Appends the rest of an open file to `text`. Of every `chunk` bytes, only those before their first NUL byte
// are appended: a NUL hides the rest of its chunk, but not the closing messages behind it. A failed read ends
// the text; it is reported as a cause and does not fail the run. `path` is the file's path, from which the
// memory for its size is reserved at once.
void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text);

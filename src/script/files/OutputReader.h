// Reader of the query tool's output files.
#pragma once

#include <cstddef>
#include <string>

class CVoFile;

// Appends the rest of an open file to `text` until a read fails, which is noted as a cause and is no failure
// of the run, or the file ends.
// Of every `chunk` bytes, only those before their first NUL byte are appended: text behind a NUL, the closing
// messages above all, stays visible. `path` is the file's path; its size is reserved at once.
void readRest(CVoFile& file, const std::string& path, std::size_t chunk, std::string& text);

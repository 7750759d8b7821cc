// Column heading of a query tool's output file.
#pragma once

#include <string>

#include "CVoFile.h"

// Deletes the heading and its line of dashes from the file; all later lines stay and end with a line break.
// The file stays unchanged if its second line is not such a line: dashes and tabs only, as long as the first
// line, with a dash at each end. Writes to "<path>.tscript.temp.txt" first; if that fails, the file stays
// unchanged and the error is returned. Memory does not depend on the length of lines.
CVoError removeOutputHeader(const std::string& path);

// The column heading of a query tool's output file.
#pragma once

#include <string>

#include "CVoFile.h"

// Drops the heading and its line of dashes from the file; every later line stays and ends with a line break.
// A file whose second line is no separator (dashes and tabs alone, as long as the first line, a dash at each
// end) stays as it is. It works through "<path>.tscript.temp.txt"; when that cannot be written, the file
// stays whole and the reason is returned. Lines may be of any length: memory does not grow with them.
CVoError removeOutputHeader(const std::string& path);

// The query tool's output files, read back as rows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// One line as a row text: its first `count` fields (at least one), which blanks keep apart, joined by the
// separator. A line with fewer fields gives a row that ends with one separator; a line of blanks gives an
// empty row. The line counts up to its first NUL.
std::string rowOfLine(std::string_view line, char separator, int count);

// Appends the rows that follow the two heading lines, up to the first empty line or the end of the file.
// False, with errno set, when the file cannot be opened or read.
bool readToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows);

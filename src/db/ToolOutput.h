// The query tool's output files: claimed before the tool writes them, read back as rows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "DatabaseReport.h"

// One line as a row text: its first `count` fields (at least one), which blanks keep apart, joined by the
// separator. A line with fewer fields gives a row that ends with one separator; a line of blanks gives an
// empty row. The line counts up to its first NUL.
std::string rowOfLine(std::string_view line, char separator, int count);

// Appends the rows that follow the two heading lines, up to the first empty line or the end of the file.
// False, with errno set, when the file cannot be opened or read.
bool readToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows);

// readToolOutput(); a failure is reported.
bool readToolOutput(const char* path, char separator, int count, std::vector<std::string>& rows,
                    const DatabaseReport& report);

// A name in the installation's temporary folder; the same one for calls within one second. Creates no file.
std::string temporaryOutputPath();

// Makes a temporary output file the process's own before the tool opens it by a name that others can foresee:
// nobody else may read it, and no link or file that somebody else put there is written to. A file that the
// process left there earlier is taken again; one that cannot be made at all is left to the tool, which then
// fails on it. False, with a line in the debug log, for what is not the process's own.
bool claimToolOutput(const std::string& path);

// Takes a claimed file away to which the tool wrote nothing: as if it had not been claimed.
void dropUnwrittenOutput(const std::string& path);

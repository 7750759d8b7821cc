// Completion of command lines, for the shells. It reads the commands and options of the program itself.
#pragma once

#include <string>
#include <vector>

#include "console/CommandTree.h"

// First word of the program's call by a shell.
inline constexpr const char* kCompleteWord = "__complete";

// Writes what the last of the words can be, one candidate a line: the word, a tab, a description. ":files"
// and ":folders" stand for the shell's own candidates. Words that do not begin like the last one are written
// as well: shells quote and compare by their own rules. Nothing is written after a failure.
void writeCandidates(const CommandDescription& program, const std::vector<std::string>& words);

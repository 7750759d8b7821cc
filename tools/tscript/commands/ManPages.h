// Manual pages of the commands, from the commands and options of the program itself.
#pragma once

#include <string>

#include "console/CommandTree.h"

// First word of the program's call by the build.
inline constexpr const char* kManPagesWord = "__man";

// Writes one page for each command into the folder: "tscript-run.1", "tscript-db-backup.1". False if one
// cannot be written.
bool writeManPages(const CommandDescription& program, const std::string& folder);

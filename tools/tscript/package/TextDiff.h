// Differences between two texts, line by line.
#pragma once

#include <string>
#include <vector>

#include "package/PackageLines.h"

// In the unified format with three lines of context, without the headings of the files; empty if the texts
// are equal. Line numbers are those of the lines. Parts of more than 5,000 changed lines are shown as
// replaced.
std::string unifiedDiff(const std::vector<PackageLine>& before, const std::vector<PackageLine>& after);

// Check of a package's statements by the T-SQL parser of tsqlbox, and of the commands among them.
#pragma once

#include <vector>

#include "package/PackageLines.h"
#include "package/PercentSigns.h"

// Returns findings that may be wrong, because SQL Server supports more T-SQL than the parser: the first error
// of each batch, names of databases that the suite does not have, and commands with a risk.
std::vector<PackageFinding> checkStatements(const std::vector<PackageLine>& lines);

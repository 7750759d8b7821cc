// Check of a package's statements by the T-SQL parser of tsqlbox, and of the commands among them.
#pragma once

#include <vector>

#include "package/PackageLines.h"
#include "package/PercentSigns.h"

// Each finding is a doubt: SQL Server knows more T-SQL than the parser. Of each batch the first error is
// found.
std::vector<PackageFinding> checkStatements(const std::vector<PackageLine>& lines);

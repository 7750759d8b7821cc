// The plain text of a package, looked at before it is enciphered.
#pragma once

#include <string>
#include <vector>

#include "package/PercentSigns.h"

struct PackageCheck {
    std::vector<PackageFinding> errors;    // the package could not be loaded, or not as it is meant
    std::vector<PackageFinding> warnings;  // it loads; this is probably not meant
    std::vector<PackageFinding> remarks;   // worth a look before it is run
    std::size_t placeholders = 0;
};

// Throws Failure (usage) when the file cannot be read or is too large.
PackageCheck checkPlainPackage(const std::string& file);

// "line 3: text", or the text alone where it is about no line.
std::string lineText(const PackageFinding& finding);

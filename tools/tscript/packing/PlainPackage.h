// Checks of a package's plain text.
#pragma once

#include <string>
#include <vector>

#include "package/Parameters.h"
#include "package/PercentSigns.h"

struct PackageCheck {
    std::vector<PackageFinding> errors;    // prevent loading, or change the package's meaning
    std::vector<PackageFinding> warnings;  // probably not intended
    std::vector<PackageFinding> remarks;   // possibly not intended
    std::size_t placeholders = 0;
    std::string database{};               // that the header names
    std::vector<Parameter> parameters{};  // that the header declares
};

// Throws Failure (kUsage) if the file cannot be read or is too large.
PackageCheck checkPlainPackage(const std::string& file);

// The finding's text, after "line N, column M: " if it concerns one line.
std::string textWithLine(const PackageFinding& finding);

// Division of a package's statements into the batches and commands that the query tool makes of them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "package/PackageLines.h"

struct PackageBatch {
    std::size_t number;  // in the package, from 1
    std::vector<PackageLine> lines;

    std::string text() const;  // its lines, joined by line feeds
};

struct PackageBatches {
    std::vector<PackageBatch> batches;  // without empty ones
    std::vector<PackageLine> commands;  // lines that the query tool executes itself
};

PackageBatches divideStatements(const std::vector<PackageLine>& lines);

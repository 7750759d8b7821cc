// Place of a failed statement in a package.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct FailurePlace {
    std::size_t batch;        // of the package, from 1
    std::size_t packageLine;  // in the package's plain text, from 1
    std::string statement;    // that line
};

// What a failed run shows about its batches.
struct RunTraces {
    std::string message;              // of the server
    std::string output;               // of the run
    std::vector<std::string> values;  // for the placeholders
};

// Returns the places that the server's line number can mean: the server counts in the batch, and the query
// tool does not report which batch failed. Batches are left out that do not hold what the message quotes,
// that come before one whose text was printed, or that do not fit the number of results. Empty if no batch is
// that long, or if a value with a line break moved the lines.
std::vector<FailurePlace> possiblePlaces(const std::string& packageFile, int line, const RunTraces& traces);

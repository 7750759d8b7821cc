// Lines of an encrypted package, with their places in its plain text.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct PackageLine {
    std::size_t number;  // in the plain text, from 1
    std::string text;
};

// Return the lines without empty ones: all, those of the header, and those that a run writes to its SQL file,
// which are those of the last script section. Throw Failure like inspectPackage().
std::vector<PackageLine> allLines(const std::string& file);
std::vector<PackageLine> headerLines(const std::string& file);
std::vector<PackageLine> statementLines(const std::string& file);

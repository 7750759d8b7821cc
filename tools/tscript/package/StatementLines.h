// Lines of a package's statements, with their places in its plain text.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct StatementLine {
    std::size_t number;  // in the plain text, from 1
    std::string text;
};

// Returns the lines that a run writes to its SQL file: those of the last script section, without empty ones.
// Throws Failure like inspectPackage().
std::vector<StatementLine> statementLines(const std::string& file);

// File of expectations beside a package: tests, each with the values of a run and what it must do.
//
//     # comment
//     test: deletes old events
//     value: 30
//     output: Deleted 54 event(s).
#pragma once

#include <string>
#include <vector>

struct ExpectedQuery {
    std::string sql;
    std::vector<std::string> rows;  // as CSV, in their order
};

struct PackageTest {
    std::string name;
    std::size_t line = 0;                   // of the file, from 1
    std::vector<std::string> setup{};       // T-SQL before the run
    std::vector<std::string> values{};      // of the placeholders
    std::vector<std::string> parameters{};  // NAME=VALUE
    int exitCode = 0;
    std::vector<std::string> outputLines{};  // whole lines
    std::vector<std::string> contained{};    // in the output
    std::vector<std::string> absent{};       // from the output
    std::vector<std::string> errors{};       // contained in the error of the run
    std::vector<ExpectedQuery> queries{};    // after the run
};

// Throws Failure (kUsage) with the line if the file cannot be read, is malformed or has no test.
std::vector<PackageTest> readExpectations(const std::string& file);

// Run of a package's test in a sample installation of its own.
#pragma once

#include <string>
#include <vector>

#include "packagetest/Expectations.h"

struct TestResult {
    std::string name;
    double seconds = 0;
    std::vector<std::string> faults{};  // what was expected and did not happen; none if the test passed
    std::string output{};               // of the run

    bool passed() const { return faults.empty(); }
};

struct TestedPackage {
    std::string name;
    std::string plain;       // path of the plain text
    std::string database{};  // of its header; empty: Dorvas
};

// Creates the installation in a temporary folder, packs, runs and compares, and deletes the installation,
// also after an interruption. Throws Failure (kInstallation) if the installation cannot be created, kUsage if
// the text cannot be packed.
TestResult runPackageTest(const TestedPackage& package, const PackageTest& test);

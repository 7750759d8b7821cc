// Contents of an encrypted package.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "PackageSeal.h"
#include "package/PackageParser.h"

struct Inspection {
    std::uintmax_t size = 0;
    std::size_t records = 0;
    std::size_t badRecords = 0;
    std::size_t firstBadLine = 0;  // from 1; 0 without bad records
    std::string firstReason;
    std::optional<hostlayer::PackageSeal> seal;
    std::string sealProblem;  // why the seal, or its lack, forbids the use of the package
    PackageContent content;   // up to the first bad record
    std::size_t bodyLines = 0;
    std::size_t placeholders = 0;

    bool isAuthentic() const { return records > 0 && badRecords == 0 && sealProblem.empty(); }
};

// Decrypts and parses a package. Throws Failure: kUsage if the file cannot be read, kInstallation if the key
// cannot be used.
Inspection inspectPackage(const std::string& file);

// The plain text of a package, looked at before it is enciphered.
#pragma once

#include <string>
#include <vector>

struct PackageCheck {
    std::vector<std::string> errors;    // the package could not be loaded, or not as it is meant
    std::vector<std::string> warnings;  // it loads; this is probably not meant
};

// Texts begin with the line's number. Throws Failure (usage) when the file cannot be read or is too large.
PackageCheck checkPlainPackage(const std::string& file);

// Encryption of a plain script into a package.
#pragma once

#include <cstdint>
#include <string>

struct SealOptions {
    std::uint64_t version = 0;  // 0: the seconds since 1970
    std::string signingKey;     // file; empty: the package is not signed
};

// Checks the plain text, encrypts and seals it, and puts the package in the target's place; until then an
// existing target stays unchanged. Writes warnings to standard error. Throws Failure.
void packFile(const std::string& plain, const std::string& target, const SealOptions& options);

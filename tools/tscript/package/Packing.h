// Encryption of a plain script into a package.
#pragma once

#include <string>

// Checks the plain text, encrypts it and puts the package in the target's place; until then an existing
// target stays unchanged. Writes warnings to standard error. Throws Failure.
void packFile(const std::string& plain, const std::string& target);

// Making a package.
#pragma once

#include <string>

// Checks the plain text, enciphers it beside the target and puts it in the target's place; a target that was
// there stays as it is until then. Warnings go to standard error. Throws Failure.
void packFile(const std::string& plain, const std::string& target);

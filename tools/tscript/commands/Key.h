// The cipher's key.
#pragma once

#include <string>

// Makes a key file; one that exists is left alone. Throws Failure (installation).
void makeKey(const std::string& file);

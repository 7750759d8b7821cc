// Text of a new package.
#pragma once

#include <string>

// A commented plain text that `lint` accepts. `database` may be empty.
std::string packageSkeleton(const std::string& name, const std::string& database);

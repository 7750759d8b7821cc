// Names of the packages in the installation's folder Scripts.
#pragma once

#include <string>
#include <vector>

// Sorted; empty if the folder cannot be read. Throws Failure if the store does not name it.
std::vector<std::string> packageNames();

// The name if there is a package of that name; else the only one that differs in nothing but the case of its
// letters; else the name as it is.
std::string packageNameInAnyCase(const std::string& name);

// Advice after a name that has no package: the most similar one. Empty if the package exists or none is
// similar.
std::string packageNameAdvice(const std::string& name);

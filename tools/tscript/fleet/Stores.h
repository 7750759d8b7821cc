// Configuration stores of several installations.
#pragma once

#include <string>
#include <vector>

struct InstallationStore {
    std::string file;   // absolute
    std::string label;  // the part of the path in which the stores differ, unique among them
};

// The files that match the patterns, sorted, each once. A pattern has the wildcards of a shell. Throws
// Failure (kUsage) for a pattern that matches no file.
std::vector<InstallationStore> findStores(const std::vector<std::string>& patterns);

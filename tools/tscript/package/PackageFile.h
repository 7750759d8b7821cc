// Input files of the package commands.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

// Opens a regular file of at most `mostGiB` GiB. Throws Failure (kUsage).
std::ifstream openPackageFile(const std::string& file, std::uintmax_t mostGiB);
// Throws Failure (kInstallation) if a line could not be read: std::getline() ends as at the end of the file.
void requireReadToEnd(const std::ifstream& in, const std::string& file);

// Name under which a package is sealed: its file name without ".sql".
std::string packageName(const std::string& file);

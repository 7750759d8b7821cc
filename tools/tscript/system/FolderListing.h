// Listing of a folder. std::filesystem's iterators end the process when memory is short.
#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

// Paths of a folder's entries, sorted. After an error, which is reported in `error`, there are none.
std::vector<std::filesystem::path> pathsIn(const std::filesystem::path& folder, std::error_code& error);

// Paths of the entries whose names have the extension, such as ".sql". Throws Failure (kInstallation) if the
// folder cannot be read.
std::vector<std::filesystem::path> pathsIn(const std::filesystem::path& folder, std::string_view extension);

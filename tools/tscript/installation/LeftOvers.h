// Files that runs left behind because they were killed.
#pragma once

#include <filesystem>
#include <vector>

// Finds this user's SQL files, plain copies and output files of dead runs in the folders of script runs and
// logs. A file that its run left on purpose is not among them, nor one that is younger than a minute.
std::vector<std::filesystem::path> findLeftOvers();

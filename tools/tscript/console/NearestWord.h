// Suggestions for mistyped words.
#pragma once

#include <string>
#include <vector>

// Returns the most similar word of the list, or an empty string if none is similar.
std::string nearestWord(const std::vector<std::string>& words, const std::string& mistyped);

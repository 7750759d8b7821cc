#include "console/NearestWord.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kLargestDistance = 2;  // of a suggestion

// Edit distance by insertions, deletions, substitutions and swaps of neighbours (optimal string alignment).
std::size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::vector<std::size_t>> d(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) d[i][0] = i;
    std::iota(d[0].begin(), d[0].end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replaced = d[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, replaced});
            const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (swapped) d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    }
    return d[from.size()][to.size()];
}

}  // namespace

std::string nearestWord(const std::vector<std::string>& words, const std::string& mistyped) {
    std::string nearest;
    std::size_t best = kLargestDistance + 1;
    for (const std::string& word : words) {
        const std::size_t distance = editDistance(mistyped, word);
        if (distance < best && distance < mistyped.size()) {
            best = distance;
            nearest = word;
        }
    }
    return nearest;
}

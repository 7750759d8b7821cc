#include "commands/MistypedCommand.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kLargestDistance = 2;  // of a suggestion
constexpr std::size_t kLongestWord = 64;     // longer ones are truncated

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

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

std::string nearestCommand(const CLI::App& app, const std::string& word) {
    std::string nearest;
    std::size_t best = kLargestDistance + 1;
    for (const CLI::App* command : commandsOf(app)) {
        const std::size_t distance = editDistance(word, command->get_name());
        if (distance < best && distance < word.size()) {
            best = distance;
            nearest = command->get_name();
        }
    }
    return nearest;
}

// Options of a command are accepted after its subcommands as well.
bool takesValue(const CLI::App* command, const std::string& option) {
    if (option.empty() || option.front() != '-') return false;
    for (; command != nullptr; command = command->get_parent())
        if (const CLI::Option* known = command->get_option_no_throw(option))
            return known->get_items_expected_max() > 0;
    return false;
}

}  // namespace

std::string describeUnknownCommand(const CLI::App& app, int argc, char** argv) {
    const CLI::App* level = &app;
    for (int i = 1; i < argc && !commandsOf(*level).empty(); ++i) {
        const std::string word = std::string(argv[i]).substr(0, kLongestWord);
        if (takesValue(level, word)) ++i;
        if (word.empty() || word.front() == '-') continue;
        const auto commands = commandsOf(*level);
        const auto next = std::find_if(commands.begin(), commands.end(),
                                       [&](const CLI::App* command) { return command->check_name(word); });
        if (next == commands.end()) {
            const std::string nearest = nearestCommand(*level, word);
            return "there is no command '" + word + "'" +
                   (nearest.empty() ? std::string() : "; did you mean '" + nearest + "'?");
        }
        level = *next;
    }
    return {};
}

#include "fleet/Stores.h"

#include <glob.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "console/Outcome.h"

namespace {

namespace fs = std::filesystem;
using Parts = std::vector<std::string>;

std::vector<std::string> matchesOf(const std::string& pattern) {
    glob_t found{};
    const int result = glob(pattern.c_str(), GLOB_BRACE | GLOB_TILDE, nullptr, &found);
    std::vector<std::string> files;
    for (std::size_t i = 0; result == 0 && i < found.gl_pathc; ++i) {
        std::error_code ignored;
        if (fs::is_regular_file(found.gl_pathv[i], ignored))
            files.push_back(fs::absolute(found.gl_pathv[i]).lexically_normal());
    }
    globfree(&found);
    if (files.empty())
        throw Failure(ExitCode::kUsage, "no file matches --stores " + pattern,
                      "Quote the pattern, so that the shell passes it on: --stores '/etc/zephra/*.toml'");
    return files;
}

std::vector<Parts> partsOf(const std::set<std::string>& files) {
    std::vector<Parts> all;
    for (const std::string& file : files) {
        const fs::path path(file);
        all.emplace_back(path.begin(), path.end());
    }
    return all;
}

// Number of leading parts, without the last of any path, that all of them have in common.
template <typename Iterator>
std::size_t commonParts(const std::vector<Parts>& all, Iterator (*begin)(const Parts&)) {
    std::size_t most = all.front().size();
    for (const Parts& parts : all) most = std::min(most, parts.size());
    std::size_t number = 0;
    const auto at = [&](const Parts& parts) { return *(begin(parts) + static_cast<std::ptrdiff_t>(number)); };
    const auto isCommon = [&](const Parts& parts) { return at(parts) == at(all.front()); };
    while (number + 1 < most && std::all_of(all.begin(), all.end(), isCommon)) ++number;
    return number;
}

std::string joined(Parts::const_iterator begin, Parts::const_iterator end) {
    std::string text;
    for (auto part = begin; part != end; ++part) text += (text.empty() ? "" : "/") + *part;
    return text;
}

std::string labelOf(const Parts& parts, std::size_t head, std::size_t tail) {
    const std::size_t end = std::max(head + 1, parts.size() - tail);
    return joined(parts.begin() + static_cast<std::ptrdiff_t>(head),
                  parts.begin() + static_cast<std::ptrdiff_t>(end));
}

}  // namespace

std::vector<InstallationStore> findStores(const std::vector<std::string>& patterns) {
    std::set<std::string> files;
    for (const std::string& pattern : patterns)
        for (std::string& file : matchesOf(pattern)) files.insert(std::move(file));
    const std::vector<Parts> all = partsOf(files);
    const std::size_t head = commonParts(
        all, +[](const Parts& parts) { return parts.begin(); });
    const std::size_t tail = commonParts(
        all, +[](const Parts& parts) { return parts.rbegin(); });
    std::vector<InstallationStore> stores;
    std::set<std::string> labels;
    for (const std::string& file : files) {
        stores.push_back({file, labelOf(all[stores.size()], head, tail)});
        labels.insert(stores.back().label);
    }
    // Paths of different depths may be left with the same part.
    if (labels.size() < stores.size())
        for (InstallationStore& store : stores) store.label = store.file;
    return stores;
}

#include "package/PackageNames.h"

#include <strings.h>

#include <filesystem>

#include "console/NearestWord.h"
#include "installation/Installation.h"
#include "system/FolderListing.h"

namespace {

namespace fs = std::filesystem;

bool hasPackage(const std::string& name) {
    std::error_code ignored;
    return fs::exists(packageFile(name), ignored);
}

}  // namespace

std::vector<std::string> packageNames() {
    std::vector<std::string> names;
    std::error_code unreadable;
    for (const fs::path& path : pathsIn(scriptsFolder(), unreadable))
        if (path.extension() == ".sql") names.push_back(path.stem().string());
    return names;
}

std::string packageNameInAnyCase(const std::string& name) {
    if (hasPackage(name)) return name;
    std::vector<std::string> same;
    for (const std::string& other : packageNames())
        if (strcasecmp(other.c_str(), name.c_str()) == 0) same.push_back(other);
    return same.size() == 1 ? same.front() : name;
}

std::string packageNameAdvice(const std::string& name) {
    if (hasPackage(name)) return {};
    const std::string nearest = nearestWord(packageNames(), name);
    return nearest.empty() ? nearest : "Did you mean " + nearest + "?";
}

#include "system/FolderListing.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>

#include "console/Outcome.h"

namespace fs = std::filesystem;

std::vector<fs::path> pathsIn(const fs::path& folder, std::error_code& error) {
    error.clear();
    std::vector<fs::path> paths;
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(folder.c_str()), closedir);
    if (listing == nullptr && errno == ENOMEM) throw std::bad_alloc();
    errno = listing == nullptr ? errno : 0;  // readdir() sets it after an error only
    for (const dirent* entry = nullptr; listing && (entry = readdir(listing.get())) != nullptr; errno = 0)
        if (const std::string_view name = entry->d_name; name != "." && name != "..")
            paths.push_back(folder / name);
    error.assign(errno, std::generic_category());
    if (error) paths.clear();
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<fs::path> pathsIn(const fs::path& folder, std::string_view extension) {
    std::error_code error;
    std::vector<fs::path> paths = pathsIn(folder, error);
    if (error)
        throw Failure(ExitCode::kInstallation, folder.string() + " cannot be listed: " + error.message());
    std::erase_if(paths, [&](const fs::path& path) { return path.extension() != extension; });
    return paths;
}

#include "package/PackageFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "console/Outcome.h"

std::ifstream openPackageFile(const std::string& file, std::uintmax_t mostGiB) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        throw Failure(ExitCode::kUsage,
                      file + " is not a file" + (error ? ": " + error.message() : std::string()));
    if (std::filesystem::file_size(file, error) > mostGiB << 30 && !error)
        throw Failure(ExitCode::kUsage, file + " is larger than " + std::to_string(mostGiB) + " GiB");
    std::ifstream in(file, std::ios::binary);
    if (!in) throw Failure(ExitCode::kUsage, file + " cannot be read: " + std::strerror(errno));
    return in;
}

void requireReadToEnd(const std::ifstream& in, const std::string& file) {
    if (in.bad()) throw Failure(ExitCode::kInstallation, file + " cannot be read to its end");
}

std::string packageName(const std::string& file) {
    const std::filesystem::path name = std::filesystem::path(file).filename();
    return (name.extension() == ".sql" ? name.stem() : name).string();
}

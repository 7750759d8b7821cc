#include "files/UniqueFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "CVoFile.h"
#include "Causes.h"
#include "FX.h"

namespace {
constexpr int kAttempts = 100;
constexpr int kOwnerOnly = S_IRUSR | S_IWUSR;
}  // namespace

bool tryPaths(std::string& path, const std::function<std::string()>& nextPath,
              const std::function<bool()>& create) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        path = nextPath();
        if (!FXFile::Exists(path.c_str()) && create()) return true;
    }
    return false;
}

bool createUnique(CVoFile& file, int access, std::string& path, const std::function<std::string()>& nextPath,
                  const std::function<void(const CVoError&)>& failed) {
    int lastError = EEXIST;
    const bool created = tryPaths(path, nextPath, [&] {
        const CVoError error = file.Open(path.c_str(), O_CREAT | access, kOwnerOnly);
        if (!error.IsError()) return true;
        lastError = static_cast<int>(error.GetErrorCode());
        failed(error);
        return false;
    });
    if (!created) reportFileFailure(path, lastError);
    return created;
}

FileDescriptor createPrivateFile(const char* path) {
    return {path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, kOwnerOnly};
}

FileDescriptor openPrivateFile(const char* path) {
    FileDescriptor file = openPlainFile(path, O_RDWR);
    struct stat status {};
    const bool ours = file.isOpen() && fstat(file.get(), &status) == 0 && status.st_uid == geteuid() &&
                      (status.st_mode & (S_IRWXG | S_IRWXO)) == 0 && ftruncate(file.get(), 0) == 0;
    return ours ? std::move(file) : FileDescriptor();
}

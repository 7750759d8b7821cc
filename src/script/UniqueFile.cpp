#include "UniqueFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "CVoFile.h"
#include "FX.h"

namespace {
constexpr int kAttempts = 100;
constexpr int kOwnerOnly = S_IRUSR | S_IWUSR;
}  // namespace

bool createUnique(CVoFile& file, int access, std::string& path, const std::function<std::string()>& nextPath,
                  const std::function<void(const CVoError&)>& failed) {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        path = nextPath();
        if (FXFile::Exists(path.c_str())) continue;
        const CVoError error = file.Open(path.c_str(), O_CREAT | access, kOwnerOnly);
        if (!error.IsError()) return true;
        failed(error);
    }
    return false;
}

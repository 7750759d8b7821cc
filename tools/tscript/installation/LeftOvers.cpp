#include "installation/LeftOvers.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <initializer_list>
#include <string>

#include "console/Pattern.h"
#include "installation/Installation.h"
#include "system/FolderListing.h"

namespace {

namespace fs = std::filesystem;

constexpr std::time_t kYoung = 60;  // seconds; a run marks its file at once
// Set and locked by the library while a run uses the file, and removed from a file that is to stay.
constexpr const char* kRunAttribute = "user.dvutilities.run";

enum class Marked { kYes, kNo };  // whether the library marks files of that name

struct NameForm {
    Pattern form;
    Marked marked;
};

// A live run locks its files. Where the file system has no attributes, the lock alone decides.
bool belongsToDeadRun(const fs::path& path, Marked marked) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) return false;
    struct stat status {};
    bool isDead = fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
                  status.st_mtime + kYoung < std::time(nullptr);
    // An empty file may have been made just before its run was killed.
    if (isDead && marked == Marked::kYes && status.st_size > 0)
        isDead = fgetxattr(file, kRunAttribute, nullptr, 0) >= 0 || errno != ENODATA;
    isDead = isDead && flock(file, LOCK_EX | LOCK_NB) == 0;
    close(file);
    return isDead;
}

void addLeftOvers(std::vector<fs::path>& found, const std::string& folder,
                  std::initializer_list<NameForm> forms) {
    std::error_code ignored;
    for (const fs::path& path : pathsIn(folder, ignored))
        for (const NameForm& form : forms)
            if (form.form.matches(path.filename()) && belongsToDeadRun(path, form.marked))
                found.push_back(path);
}

}  // namespace

std::vector<fs::path> findLeftOvers() {
    std::vector<fs::path> found;
    addLeftOvers(found, folderOfRuns(),
                 {{Pattern(".+_[0-9]+_[0-9]+_[0-9]+\\.sql"), Marked::kYes},
                  {Pattern(".+_[0-9]+_[0-9]+_[0-9]+_DE\\.txt"), Marked::kNo}});
    addLeftOvers(found, storeText("EventManager", "dEVLOGDIR"),
                 {{Pattern("Tscript_.+_[0-9]+_[0-9]+\\.log"), Marked::kYes},
                  {Pattern("Tscript_.+_[0-9]+_[0-9]+\\.log\\.tscript\\.temp\\.txt"), Marked::kNo}});
    std::sort(found.begin(), found.end());
    return found;
}

// Checks of the folders that runs read and write, of their disks, and of the files that a process may open.
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "DVUtilities/commonFunc.h"
#include "HostSettings.h"
#include "doctor/CheckList.h"
#include "doctor/CheckSteps.h"
#include "doctor/ProbeFile.h"
#include "installation/Installation.h"
#include "installation/LeftOvers.h"
#include "record/RecordFolder.h"
#include "record/RecordSettings.h"
#include "system/FolderListing.h"

namespace {

constexpr std::size_t kProbeSize = std::size_t{64} << 10;
constexpr unsigned long long kLittleSpace = 64ULL << 20;  // enough for most runs: a warning
constexpr unsigned long long kNoSpace = 4ULL << 20;       // a run's SQL file and output may not fit
constexpr rlim_t kFewDescriptors = 64;

struct FolderCheck {
    const char* name;
    const char* key;
    const char* value;
    const char* subfolder;
    int access;  // mode of access(2)
    bool isOptional;
};

constexpr FolderCheck kFolders[] = {
    {"installation folder", "Base", "dZEPHRAHOME", "", R_OK | X_OK, false},
    {"package folder", "Base", "dZEPHRAHOME", "/Scripts", R_OK | X_OK, false},
    {"program folder", "Base", "dBASEHOME", "", X_OK, true},
    {"temporary folder", "Base", "dZEPHRATEMPDIR", "", W_OK | X_OK, false},
    {"folder of script runs", "Base", "sSCRIPTSTEMPDIR", "", W_OK | X_OK, true},
    {"log folder", "EventManager", "dEVLOGDIR", "", W_OK | X_OK, false},
};

bool needsWriting(int access) {
    return (access & W_OK) != 0;
}

// Reason why the folder cannot be used; empty if it can. A folder to be written is proved by a file, which
// also finds a full disk.
std::string useProblem(const std::string& path, int mode) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::strerror(errno);
    if (!S_ISDIR(status.st_mode)) return "is not a folder";
    if (access(path.c_str(), mode) != 0) return std::strerror(errno);
    if (!needsWriting(mode)) return {};
    try {
        const ProbeFile probe(path, std::string(kProbeSize, '\n'));
        return {};
    } catch (const std::system_error& error) {
        return "a file of 64 KiB cannot be written: " + error.code().message();
    }
}

void checkOwner(CheckList& list, const std::string& name, const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return;
    if (canStrangersReplaceFilesIn(path))
        list.addFailure(name + " mode", ExitCode::kInstallation, "every user can change files in " + path,
                        "Set its mode: chmod o-w " + path);
    if (status.st_uid != geteuid() && status.st_uid != 0)
        list.addFailure(name + " owner", ExitCode::kInstallation,
                        path + " belongs to another user (number " + std::to_string(status.st_uid) +
                            "), who can replace its files",
                        "Run scripts as that user, or give it to root or to this one: chown USER " + path);
}

void checkSpace(CheckList& list, const std::string& name, const std::string& path) {
    struct statvfs disk {};
    if (statvfs(path.c_str(), &disk) != 0) return;
    const unsigned long long available = static_cast<unsigned long long>(disk.f_bavail) * disk.f_frsize;
    if (available >= kLittleSpace) return;
    const std::string text = std::to_string(available >> 20) + " MiB are free in " + path;
    const char* advice =
        "Free space on its disk: outputs of runs are stored there until they have been read.";
    available < kNoSpace ? list.addFailure(name + " space", ExitCode::kInstallation, text, advice)
                         : list.addWarning(name + " space", text, advice);
}

void checkFolderPath(CheckList& list, const std::string& name, const std::string& path, int mode,
                     const std::string& setIt) {
    const std::string problem = useProblem(path, mode);
    if (!problem.empty())
        return list.addFailure(
            name, ExitCode::kInstallation, path + ": " + problem,
            std::string("Create the folder, let this user ") +
                (needsWriting(mode) ? "write there and free space on its disk" : "read there") +
                ", or set another: " + setIt);
    list.addGood(name, path);
    checkOwner(list, name, path);
    if (needsWriting(mode)) checkSpace(list, name, path);
}

void checkFolder(CheckList& list, const FolderCheck& folder) {
    const std::string named = storeText(folder.key, folder.value);
    const std::string value = std::string(folder.key) + "." + folder.value;
    const std::string setIt = "tscript config set " + value + " FOLDER";
    if (!named.empty())
        return checkFolderPath(list, folder.name, named + folder.subfolder, folder.access, setIt);
    if (!folder.isOptional)
        list.addFailure(folder.name, ExitCode::kInstallation, "the store has no value " + value,
                        "Set it: " + setIt);
}

// Files of tscript itself and of the query tool.
void checkTmpdir(CheckList& list) {
    const char* set = std::getenv("TMPDIR");
    const std::string path = set != nullptr && *set != '\0' ? set : "/tmp";
    checkFolderPath(list, "TMPDIR", path, W_OK | X_OK, "export TMPDIR=FOLDER");
}

// Runs create the folder if its parent exists, and do not fail without it.
void checkRecordFolder(CheckList& list) {
    const std::string path = hostlayer::hostSetting(record_setting::kFolder, "");
    std::error_code ignored;
    const bool isToBeCreated =
        !std::filesystem::exists(std::filesystem::symlink_status(path, ignored)) &&
        std::filesystem::is_directory(std::filesystem::path(path).parent_path(), ignored);
    if (path.empty() || isToBeCreated) return;
    const RecordFolder folder(path, RecordFolder::Access::kRead);
    const std::string problem = folder.isOpen() ? useProblem(path, W_OK | X_OK) : folder.problem();
    if (!problem.empty())
        return list.addWarning("run records", path + ": " + problem,
                               "Let only the user of the runs write there (chmod 700 " + path +
                                   "), or set another folder: tscript config set host.runRecords FOLDER");
    list.addGood("run records", path);
    checkOwner(list, "run records", path);
}

void checkDescriptors(CheckList& list) {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    std::error_code error;
    const rlim_t used = pathsIn("/proc/self/fd", error).size();
    const std::string text = std::to_string(used) + " of " + std::to_string(limit.rlim_cur) + " are open";
    if (!error && limit.rlim_cur >= used + kFewDescriptors) return list.addGood("file descriptors", text);
    list.addFailure("file descriptors", ExitCode::kInstallation, error ? error.message() : text,
                    "Raise the limit of this user or service: ulimit -n 1024, or LimitNOFILE of systemd.");
}

void checkLeftOvers(CheckList& list) {
    const std::vector<std::filesystem::path> files = findLeftOvers();
    if (files.empty()) return;
    list.addWarning("files of dead runs",
                    std::to_string(files.size()) + ", the first is " + files.front().string(),
                    "tscript tidy deletes them.");
}

}  // namespace

void checkFolders(CheckList& list) {
    for (const FolderCheck& folder : kFolders) checkFolder(list, folder);
    checkTmpdir(list);
    checkRecordFolder(list);
    checkDescriptors(list);
    checkLeftOvers(list);
}

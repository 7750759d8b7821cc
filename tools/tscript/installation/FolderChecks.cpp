// Checks of the folders that runs read and write.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "DVUtilities/commonFunc.h"
#include "installation/CheckList.h"
#include "installation/CheckSteps.h"

namespace {

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

void checkFolder(CheckList& list, const FolderCheck& folder) {
    const std::string named = storeText(folder.key, folder.value);
    const std::string value = std::string(folder.key) + "." + folder.value;
    const std::string setIt = "tscript config set " + value + " FOLDER";
    if (named.empty()) {
        if (!folder.isOptional)
            list.addFailure(folder.name, ExitCode::kInstallation, "the store has no value " + value,
                            "Set it: " + setIt);
        return;
    }
    const std::string path = named + folder.subfolder;
    struct stat status {};
    const bool exists = stat(path.c_str(), &status) == 0;
    const bool needsWriting = (folder.access & W_OK) != 0;
    if (!exists || !S_ISDIR(status.st_mode)) {
        list.addFailure(folder.name, ExitCode::kInstallation,
                        path + ": " + (exists ? "is not a folder" : std::strerror(errno)),
                        "Create the folder, or set another: " + setIt);
    } else if (access(path.c_str(), folder.access) != 0) {
        list.addFailure(folder.name, ExitCode::kInstallation, path + ": " + std::strerror(errno),
                        std::string("Let this user ") + (needsWriting ? "write" : "read") + " there.");
    } else {
        list.addGood(folder.name, path);
    }
}

}  // namespace

std::string storeText(const char* key, const char* valueName) {
    std::vector<char> text(8192);
    std::string ignored;
    return GetRegistryItemValue("", key, valueName, nullptr, text.data(), ignored) ? text.data() : "";
}

void checkFolders(CheckList& list) {
    for (const FolderCheck& folder : kFolders) checkFolder(list, folder);
}

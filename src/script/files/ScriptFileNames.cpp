#include "files/ScriptFileNames.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "FX.h"
#include "VTPlatformInfo.h"

namespace {

// Ends with a slash.
std::string scratchFolder() {
    const VTPlatformInfo configuration;
    std::string folder;
    if (configuration.getString("Base", "sSCRIPTSTEMPDIR", &folder) != 0 && !folder.empty())
        return folder + "/";
    if (configuration.getString("Base", "dZEPHRATEMPDIR", &folder) != 0) return folder + "/";
    return "./";
}

// The query tool's command line puts paths between double quotes and cannot escape one. A slash would name a
// folder that need not exist.
std::string fileNamePart(std::string scriptName) {
    std::replace(scriptName.begin(), scriptName.end(), '"', '_');
    std::replace(scriptName.begin(), scriptName.end(), '/', '_');
    return scriptName;
}

}  // namespace

std::string scratchPath(const std::string& scriptName, const char* ending) {
    return scratchFolder() + FXString::Format("%s_%d_%d_%d%s", fileNamePart(scriptName).c_str(),
                                              static_cast<int>(getpid()),
                                              static_cast<int>(std::time(nullptr)), std::rand(), ending);
}

std::string outputPath(const std::string& logDir, const std::string& dbName, const std::string& scriptName) {
    return FXString::Format("%s/Tscript_%s_%s_%lld_%d.log", logDir.c_str(), dbName.c_str(),
                            fileNamePart(scriptName).c_str(), static_cast<long long>(std::time(nullptr)),
                            std::rand());
}

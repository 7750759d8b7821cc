#include "process/ProgramPath.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "EvDebug.h"
#include "HostSetup.h"

namespace hostlayer {
namespace {

// Places of the query tool when the caller names its old default path and the store maps nothing.
constexpr const char* kDefaultQueryTool = "/opt/mssql-tools/bin/sqlcmd";
constexpr const char* kCurrentQueryTool = "/opt/mssql-tools18/bin/sqlcmd";
constexpr const char* kQueryToolOnPath = "sqlcmd";

std::string installedQueryTool() {
    for (const char* path : {kDefaultQueryTool, kCurrentQueryTool})
        if (::access(path, X_OK) == 0) return path;
    return kQueryToolOnPath;
}

// The first executable file of that name in the folders of PATH; the name itself if there is none.
std::string foundOnPath(const std::string& name) {
    const char* variable = std::getenv("PATH");
    std::string_view folders = variable != nullptr ? variable : "";
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
        const std::string path = (folder.empty() ? "." : std::string(folder)) + "/" + name;
        if (::access(path.c_str(), X_OK) == 0) return path;
    }
    return name;
}

}  // namespace

std::string entryNameOf(std::string_view program) {
    std::string name(program.substr(program.rfind('/') + 1));
    std::erase(name, '"');
    return name;
}

std::string programPath(std::string_view name, const StoreState& store) {
    std::string program(name);
    std::erase(program, '"');
    const auto* mapped = store.content ? findValue(store.content->programs, entryNameOf(program)) : nullptr;
    std::string path = program;
    if (mapped != nullptr)
        path = textOf(*mapped);
    else if (program == kDefaultQueryTool)
        path = installedQueryTool();
    if (path != program)
        EvDebug().DebugLevel(kTraceDebugLevel, "Program [%s] is started as [%s]", program.c_str(),
                             path.c_str());
    return path;
}

std::string queryToolPath() {
    const std::string path = programPath(kDefaultQueryTool, *currentStore());
    return path.find('/') == path.npos ? foundOnPath(path) : path;
}

}  // namespace hostlayer

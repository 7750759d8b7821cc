#include "installation/Components.h"

#include <string_view>

#include "DVUtilities/commonFunc.h"

namespace {

constexpr Component kComponents[] = {{"Dorvas", isPlatformDV, nullptr},
                                     {"NQ2", isPlatformNQ2, "InstalledPackages\\803"},
                                     {"WFEngine", isPlatformWFEngine, "InstalledPackages\\808"},
                                     {"HistoryDB", isPlatformHistory, "InstalledPackages\\810"},
                                     {"VTCloud", isPlatformVTCloud, "InstalledPackages\\809"}};

bool isInstalled(const Component& component) {
    std::string ignored;
    return component.isInstalled("", ignored);
}

}  // namespace

std::span<const Component> components() {
    return kComponents;
}

bool isInstalled(const SuiteDatabase& database) {
    for (const Component& component : kComponents)
        if (std::string_view(component.database) == database.name) return isInstalled(component);
    return false;
}

std::vector<const SuiteDatabase*> installedDatabases() {
    std::vector<const SuiteDatabase*> databases;
    for (const Component& component : kComponents)
        if (isInstalled(component)) databases.push_back(&suiteDatabase(component.database));
    return databases;
}

#include <strings.h>

#include <string_view>

#include "DVUtilities/commonFunc.h"
#include "doctor/CheckSteps.h"
#include "installation/Components.h"

namespace {

constexpr const char* kInstalled = "Installed";
constexpr unsigned int kManagementServer = 1;
constexpr unsigned int kConsole = 4;

// Programs take an unknown type for a host without the management server and report nothing.
void checkPlatformType(CheckList& list) {
    constexpr const char* kAdvice =
        "Set 1 for a management server, 4 for a console, 5 for both: tscript config set Base.nPLATTYPE 1";
    unsigned int type = 0;
    std::string error;
    if (!GetRegistryItemValue("", "Base", "nPLATTYPE", &type, nullptr, error))
        return list.addFailure("platform type", ExitCode::kInstallation,
                               "Base.nPLATTYPE is missing or not a number", kAdvice);
    const std::string text = "Base.nPLATTYPE is " + std::to_string(type);
    if ((type & ~(kManagementServer | kConsole)) != 0 || type == 0)
        return list.addFailure("platform type", ExitCode::kInstallation, text + ", which no component has",
                               kAdvice);
    list.addGood("platform type", text);
}

// Only the exact word installs a component.
void checkInstallState(CheckList& list, const Component& component) {
    const std::string name = std::string("component of ") + component.database;
    const std::string value = std::string(component.packageKey) + ".sInstallState";
    const std::string state = storeText(component.packageKey, "sInstallState");
    const SuiteDatabase& database = suiteDatabase(component.database);
    if (state == kInstalled) return;
    if (!state.empty())
        return strcasecmp(state.c_str(), kInstalled) == 0
                   ? list.addFailure(name, ExitCode::kInstallation,
                                     value + " is '" + state + "', which does not count as installed",
                                     "Set it: tscript config set '" + value + "' " + kInstalled)
                   : list.addSkipped(name, value + " is '" + state + "'");
    const bool sharesValues = std::string_view(database.instance) == "sINSTANCE";
    if (!sharesValues && !storeText("Database", database.instance).empty())
        list.addWarning(name,
                        std::string("the store names its server (") + database.instance +
                            "), but the component is not installed",
                        "If it is: tscript config set '" + value + "' " + kInstalled);
}

}  // namespace

void checkComponents(CheckList& list) {
    checkPlatformType(list);
    for (const Component& component : components())
        if (component.packageKey != nullptr) checkInstallState(list, component);
    if (installedDatabases().empty())
        list.addFailure("databases", ExitCode::kInstallation,
                        "no component with a database is installed, so no script can run here",
                        "On a management server the type includes 1: tscript config set Base.nPLATTYPE 1");
}

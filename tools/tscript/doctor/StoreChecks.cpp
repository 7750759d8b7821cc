// Checks of the configuration store: the file, its folder and its values.
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "DVUtilities/commonFunc.h"
#include "HostSetup.h"
#include "console/NearestWord.h"
#include "doctor/CheckSteps.h"
#include "installation/Installation.h"
#include "installation/KnownValues.h"

namespace {

constexpr const char* kReference = "docs/configuration.md describes the store.";
constexpr std::string_view kHost = "host";

void checkValue(CheckList& list, const KnownValue& known, const std::string& text) {
    if (known.accepts(text)) return;
    const std::string name = std::string(known.key).append(".").append(known.name);
    list.addFailure("store value", ExitCode::kInstallation,
                    name + " is '" + text + "', not " + known.description(),
                    "Set it: tscript config set " + name + " VALUE");
}

void checkSetting(CheckList& list, const std::string& name, const std::string& text) {
    if (const KnownValue* known = findKnownValue(kHost, name)) return checkValue(list, *known, text);
    std::vector<std::string> names;
    for (const KnownValue& known : knownValues())
        if (known.key == kHost) names.emplace_back(known.name);
    const std::string nearest = nearestWord(names, name);
    list.addWarning("store value", "host." + name + " is no setting and has no effect",
                    nearest.empty() ? kReference : "Did you mean host." + nearest + "?");
}

// A number, or the text of a value that is none; empty if the store does not have the value.
std::string numberText(const std::string& key, const std::string& name) {
    unsigned int number = 0;
    std::string ignored;
    const bool isNumber =
        GetRegistryItemValue("", key.c_str(), name.c_str(), &number, /*text=*/nullptr, ignored);
    return isNumber ? std::to_string(number) : storeText(key.c_str(), name.c_str());
}

}  // namespace

void checkStore(CheckList& list) {
    const hostlayer::StoreReport store = hostlayer::inspectStore();
    if (!store.isInForce || !store.problem.empty())
        return list.addFailure("store", ExitCode::kInstallation, store.problem,
                               std::string("Name the store with --store or ZEPHRA_REGISTRY. ") + kReference);
    list.addGood("store", store.path);
    for (const std::string& oddity : store.oddities) list.addWarning("store content", oddity, kReference);
    for (const FileOfRuns& file : filesOfRuns())
        if (canStrangersChange(file.path))
            list.addFailure(std::string(file.name) + " mode", ExitCode::kInstallation,
                            "every user can change " + file.path, "Set its mode: chmod o-w " + file.path);
    const std::string folder = std::filesystem::absolute(store.path).parent_path().string();
    if (canStrangersReplaceFilesIn(folder))
        list.addFailure("store folder", ExitCode::kInstallation, "every user can replace files in " + folder,
                        "Set its mode: chmod o-w " + folder);
    if (storeText("Dorvase", "sDVHOSTNAME").empty())
        list.addFailure("host name", ExitCode::kInstallation, "the store does not name this host",
                        "Set it: tscript config set Dorvase.sDVHOSTNAME NAME");
}

void checkStoreValues(CheckList& list) {
    for (const auto& [name, text] : hostlayer::inspectStore().settings) checkSetting(list, name, text);
    for (const KnownValue& known : knownValues()) {
        if (known.kind != ValueKind::kNumber || known.key == kHost) continue;
        const std::string text = numberText(std::string(known.key), std::string(known.name));
        if (!text.empty()) checkValue(list, known, text);
    }
}

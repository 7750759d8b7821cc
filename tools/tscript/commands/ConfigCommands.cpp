// Command family `config`: the values of the configuration store.
#include <memory>

#include "HostSetup.h"
#include "commands/Commands.h"
#include "console/Console.h"
#include "console/JsonOutput.h"
#include "installation/Installation.h"
#include "installation/StoreValues.h"

namespace {

struct ConfigOptions {
    std::string key;
    std::string name;
    std::string value;
    bool json = false;
};

constexpr const char* kMasked = "(secret)";

// Matches a key with or without its instance; "host" includes its programs.
bool isUnder(const StoreEntry& entry, const std::string& key) {
    const std::string full = entry.fullName();
    return key.empty() || entry.table.back() == key || entry.table.front() == key ||
           full.substr(0, full.size() - entry.name.size() - 1) == key;
}

Json toJson(const StoreEntry& entry) {
    Json result;
    result["name"] = entry.fullName();
    result["secret"] = entry.isSecret();
    if (entry.isSecret()) return result;
    std::visit([&result](const auto& value) { result["value"] = value; }, entry.value);
    return result;
}

ExitCode show(const ConfigOptions& options) {
    requireStore();
    Json list = Json::array();
    std::size_t shownCount = 0;
    for (const StoreEntry& entry : storeEntries()) {
        if (!isUnder(entry, options.key)) continue;
        ++shownCount;
        if (options.json) {
            list.push_back(toJson(entry));
        } else {
            writeResult(entry.fullName() + " = " + (entry.isSecret() ? kMasked : entry.text()));
        }
    }
    if (options.json) writeJson(list);
    if (shownCount > 0 || options.key.empty()) return ExitCode::kDone;
    throw Failure(ExitCode::kUsage, "the store has no key '" + options.key.substr(0, 128) + "'",
                  "tscript config show lists all values.");
}

ExitCode get(const ConfigOptions& options) {
    requireStore();
    const StoreEntry wanted = parseEntryName(options.name);
    for (const StoreEntry& entry : storeEntries()) {
        if (entry.table != wanted.table || entry.name != wanted.name) continue;
        if (entry.isSecret())
            throw Failure(ExitCode::kUsage, "'" + entry.fullName() + "' is a secret and is not shown");
        if (options.json) {
            writeJson(toJson(entry));
        } else {
            writeResult(entry.text() + "\n");
        }
        return ExitCode::kDone;
    }
    throw Failure(ExitCode::kInstallation, "the store has no value '" + wanted.fullName() + "'");
}

ExitCode set(const ConfigOptions& options) {
    requireStore();
    const StoreEntry entry = parseEntryName(options.name);
    const auto value = parseValue(entry, options.value);
    std::string problem;
    if (!hostlayer::setStoreValue(entry.table, entry.name, value, problem))
        throw Failure(ExitCode::kInstallation, "the store cannot be changed: " + problem);
    writeNote("set " + entry.fullName());
    return ExitCode::kDone;
}

}  // namespace

void addConfigCommands(CLI::App& app, Action& action) {
    const auto options = std::make_shared<ConfigOptions>();
    CLI::App* family = addFamily(app, "config", "The values of the configuration store");
    constexpr const char* kName = "KEY.VALUE, INSTANCE.KEY.VALUE, host.SETTING or host.programs.TOOL";
    CLI::App* showing =
        addCommand(family, action, "show", "List the values; secrets are masked", options, show);
    addOption(showing, "--key", options->key, "Only the values of this key", {.type = "KEY"});
    addFlag(showing, "--json", options->json, "Write JSON");
    CLI::App* getting = addCommand(family, action, "get", "Show one value", options, get);
    addOption(getting, "NAME", options->name, kName, {.required = true});
    addFlag(getting, "--json", options->json, "Write JSON");
    CLI::App* setting = addCommand(family, action, "set",
                                   "Set one value; the file keeps its comments and order", options, set);
    addOption(setting, "NAME", options->name, kName, {.required = true});
    addOption(setting, "VALUE", options->value, "The new value", {.required = true, .mayBeEmpty = true});
}

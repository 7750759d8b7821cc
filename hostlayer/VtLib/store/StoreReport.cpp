#include "HostSetup.h"

#include <map>
#include <string>

#include "store/Store.h"

namespace hostlayer {
namespace {

std::map<std::string, std::string> textsOf(const StoreKey& key) {
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : key) texts.emplace(name, textOf(value));
    return texts;
}

}  // namespace

StoreReport inspectStore() {
    const auto store = currentStore();
    StoreReport report;
    report.path = store->path;
    report.problem = store->problem;
    report.isInForce = store->content != nullptr;
    if (!report.isInForce) return report;
    report.oddities = store->content->oddities;
    report.settings = textsOf(store->content->settings);
    report.programs = textsOf(store->content->programs);
    for (const auto& [instance, keys] : store->content->instances)
        for (const auto& [key, values] : keys)
            report.instances[instance][key].insert(values.begin(), values.end());
    return report;
}

}  // namespace hostlayer

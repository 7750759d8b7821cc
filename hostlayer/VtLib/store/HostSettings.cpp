#include "HostSettings.h"

#include "store/Store.h"

namespace hostlayer {

std::string hostSetting(const char* name, const char* fallback) {
    const auto store = currentStore();
    const StoreValue* value = store->content ? findValue(store->content->settings, name) : nullptr;
    return value != nullptr ? textOf(*value) : fallback;
}

}  // namespace hostlayer

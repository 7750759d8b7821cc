#include "VtSettings.h"

#include "HostSettings.h"

bool VtSetting(const char* name, std::string* value) {
    std::string text = hostlayer::hostSetting(name, "");
    if (text.empty()) return false;
    *value = std::move(text);
    return true;
}

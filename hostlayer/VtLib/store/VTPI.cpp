#include "VTPI.h"

#include <mutex>
#include <shared_mutex>

#include "VTPlatformInfo.h"

namespace {

constexpr const char* kFallbackFolder = "/tmp";

struct Focus {
    std::shared_mutex lock;
    std::string instance;
};

Focus& focus() {
    static Focus& instance = *new Focus;  // never destroyed: static destructors may still read it
    return instance;
}

std::string folderSetting(const char* key, const char* valueName, const std::string& fallback) {
    std::string path;
    if (VTPlatformInfo().getString(key, valueName, &path) == 0 || path.empty()) return fallback;
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

}  // namespace

std::string VTPI_Base::getZephraTempDirectory() const {
    return folderSetting("Base", "dZEPHRATEMPDIR", kFallbackFolder);
}

std::string VTPI_EventManager::getLogFilesDirectory() const {
    return folderSetting("EventManager", "dEVLOGDIR", m_base.getZephraTempDirectory());
}

void VTPI_Focus::setFocus(const char* instance) {
    const std::unique_lock lock(focus().lock);
    focus().instance = instance != nullptr ? instance : "";
}

std::string VTPI_Focus::getFocus() {
    const std::shared_lock lock(focus().lock);
    return focus().instance;
}

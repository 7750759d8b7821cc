#include "HostIdentity.h"

#include <unistd.h>

#include <array>

#include "CallerText.h"
#include "DVUtilities/commonFunc.h"
#include "ExceptionGuard.h"
#include "OpenFile.h"
#include "Registry.h"
#include "RegistryNames.h"

namespace {

constexpr char kMarkerFile[] = "VorlentVM";

bool hasPlatformBit(unsigned int bit, std::string& errorText) {
    unsigned int platformType = 0;
    return readRegistryNumber(registry::key::kBase, registry::value::kPlatformType, platformType,
                              errorText) &&
           (platformType & bit) != 0;
}

bool isPackageInstalled(const char* packageKey, std::string& errorText) {
    std::string state;
    return readRegistryText(packageKey, registry::value::kInstallState, state, errorText) &&
           state == registry::kInstalled;
}

}  // namespace

bool readHostName(std::string& hostName, std::string& errorText) {
    return readRegistryText(registry::key::kDorvase, registry::value::kHostName, hostName, errorText);
}

std::string instanceFromMarkerFile(std::string_view modulePath) {
    const std::size_t slash = modulePath.rfind('/');
    if (slash == modulePath.npos) return {};
    OpenFile marker((std::string(modulePath.substr(0, slash + 1)) + kMarkerFile).c_str(), "r");
    std::array<char, kNameSize> line{};
    if (!marker.isOpen() || std::fgets(line.data(), kNameSize, marker.get()) == nullptr) return {};
    const std::string_view text = line.data();
    return std::string(text.substr(0, text.rfind('\n')));
}

bool GetNetHostName(const char* instance, char* hostName, std::string& errorText) {
    return GetRegistryItemValue(instance, registry::key::kDorvase, registry::value::kHostName, nullptr,
                                hostName, errorText);
}

bool GetInstanceName(char* instanceName) {
    if (instanceName == nullptr) return false;
    return guarded(false, [&] {
        std::array<char, kNameSize> modulePath{};
        DVUtil_GetModuleFileName(nullptr, modulePath.data(), kNameSize);
        const std::string marked = instanceFromMarkerFile(modulePath.data());
        copyCut(instanceName, kNameSize, marked.empty() ? registry::kDefaultInstance : marked);
        return true;
    });
}

bool DVUtil_GetComputerName(char* name, unsigned int* size) {
    return name != nullptr && size != nullptr && gethostname(name, *size) == 0;
}

unsigned int DVUtil_GetModuleFileName(void* /*module*/, char* /*path*/, unsigned int /*size*/) {
    return 0;
}

bool isPlatformDV(const char* /*instance*/, std::string& errorText) {
    return guarded(false, [&] { return hasPlatformBit(registry::kManagementServerBit, errorText); });
}

bool isPlatformPX(const char* /*instance*/, std::string& errorText) {
    return guarded(false, [&] { return hasPlatformBit(registry::kConsoleBit, errorText); });
}

bool isPlatformNQ2(const char* /*instance*/, std::string& errorText) {
    return guarded(false, [&] { return isPackageInstalled(registry::key::kNQ2Package, errorText); });
}

bool isPlatformWFEngine(const char* /*instance*/, std::string& errorText) {
    return guarded(false, [&] { return isPackageInstalled(registry::key::kWFEnginePackage, errorText); });
}

bool isPlatformVTCloud(const char* /*instance*/, std::string& errorText) {
    return guarded(false, [&] { return isPackageInstalled(registry::key::kVTCloudPackage, errorText); });
}

bool isPlatformHistory(const char* /*instance*/, std::string& errorText) {
    return guarded(false, [&] { return isPackageInstalled(registry::key::kHistoryPackage, errorText); });
}

bool isPlatformTNet(const char* /*instance*/, std::string& /*errorText*/) {
    return false;  // TNet does not exist on this platform
}

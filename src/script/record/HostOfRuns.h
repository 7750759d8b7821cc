// Host and installation of runs, as their records name them.
#pragma once

#include <unistd.h>

#include <array>
#include <string>

#include "RegistryNames.h"
#include "VTPlatformInfo.h"

inline std::string hostName() {
    std::array<char, 256> name{};
    ::gethostname(name.data(), name.size() - 1);
    return name.data();
}

// Returns the folder of the installation; empty if the configuration names none. An empty instance is the
// default one.
inline std::string installationFolder(const char* instance) {
    std::string folder;
    VTPlatformInfo(instance).getString(registry::key::kBase, registry::value::kInstallDirectory, &folder);
    return folder;
}

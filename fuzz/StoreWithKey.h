// Temporary configuration store with a cipher key.
#pragma once

#include <cstdlib>
#include <filesystem>

#include "TempDir.h"

class StoreWithKey {
  public:
    StoreWithKey() {
        const std::string key = m_folder / "key";
        support::writeFile(key, "sample key of thirty-two bytes..");
        std::filesystem::permissions(key, std::filesystem::perms::owner_read);
        support::writeFile(m_folder / "registry.toml",
                           "[host]\nrequireSeal = 1\ncipherKeyFile = '" + key + "'\n");
        setenv("ZEPHRA_REGISTRY", (m_folder / "registry.toml").c_str(), /*overwrite=*/1);
    }

  private:
    support::TempDir m_folder;
};

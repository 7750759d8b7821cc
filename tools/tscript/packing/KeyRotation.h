// Change of the cipher key: packages, their seals and the stored credentials get a new one.
//
// The store names the new key and the previous one, both of which decrypt, from before the first package is
// converted until the last one is. So runs find a key that fits at any moment, and a rotation that was cut
// off is completed by the next.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "HostSetup.h"

class KeyRotation {
  public:
    struct Result {
        std::string newKey;
        std::string previousKey;
        std::size_t packages = 0;     // converted now
        std::size_t credentials = 0;  // converted now
        std::vector<std::string>
            unreadable;  // packages that neither key decrypts, left as they are: "FILE: REASON"
    };

    // `grace`: time for which both keys stay in use after the last conversion, for programs that have read
    // credentials or opened a package before it, but have not loaded the keys yet.
    explicit KeyRotation(std::chrono::seconds grace) : m_grace(grace) {}

    // Throws Failure (kInstallation). What has been converted stays so.
    Result run();

    // Path of the previous key; empty if no rotation is under way.
    static std::string previousKey();

  private:
    void deleteLeftOvers() const;
    void createKey();
    void switchKeys();
    void convertCredentials();
    void convertPackages();
    void convertPackage(const std::filesystem::path& file);
    void dropPreviousKey() const;
    std::vector<hostlayer::StoreChange> convertedCredentials(bool areNewLikely);

    std::chrono::seconds m_grace;
    std::filesystem::path m_scripts;
    Result m_result;
};

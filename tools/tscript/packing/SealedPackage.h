// Writing of sealed packages.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

#include "PackageSeal.h"

// Writes a package whose first record is its seal. The key is the one that the thread's ciphers use.
class SealedPackageWriter {
  public:
    // `signingKey`: the file of the key to sign with; empty keeps the signature of `seal`, if any. Throws
    // Failure (kInstallation) if a key cannot be used, kUsage for a name that no script can have.
    SealedPackageWriter(const std::string& file, const hostlayer::PackageSeal& seal,
                        const std::string& signingKey);
    // Adds a record of the package, and its text.
    void addRecord(std::string_view record, std::string_view plain);
    // Throws Failure (kInstallation) if the file could not be written.
    void finish();

  private:
    std::string sealRecord() const;

    std::string m_file;
    std::ofstream m_out;
    hostlayer::PackageSealer m_sealer;
};

// Version of a package that is sealed now: the seconds since 1970.
std::uint64_t currentPackageVersion();

// Packages that are encrypted with another key.
#pragma once

#include <string>

#include "VTPassword.h"
#include "package/PlainRecord.h"

// Cipher that uses the key of a given file.
class KeyedCipher {
  public:
    // Throws Failure (kInstallation) if the file does not hold a usable key.
    explicit KeyedCipher(const std::string& keyFile);

    const std::string& keyFile() const { return m_keyFile; }
    bool decrypt(const std::string& record, PlainRecord& plain);
    bool encrypt(const char* plain, std::string& record);
    const char* lastReason() const;

  private:
    std::string m_keyFile;
    VTPassword m_cipher;
};

// Returns whether all records have the cipher's key, and the seal, if there is one, fits.
bool isAuthentic(const std::string& file, KeyedCipher& cipher);

enum class Unsealed { kStays, kIsSealed };  // what becomes of a package without a seal
enum class Repacked { kDone, kHadNewKey };

// Encrypts a package with another key and renews its seal. Replaces the file that a link points to, not the
// link. `temporaryName`: beginning of a temporary file's path in the same folder; empty for the package's.
// Throws Failure; the file is then unchanged.
Repacked repackFile(const std::string& file, KeyedCipher& from, KeyedCipher& to, Unsealed unsealed,
                    const std::string& temporaryName = {});

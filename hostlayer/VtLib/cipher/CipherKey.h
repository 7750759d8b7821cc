// The installation's cipher key: a file of exactly 32 bytes, named by cipherKeyFile in the store's [host]
// table.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "VTPassword.h"

namespace hostlayer {

constexpr std::size_t kCipherKeyBytes = 32;

// Path of the key file; empty when the store names none.
std::string cipherKeyPath();
// Paths of the keys that decrypt: that one and, while keys are rotated, the previous one.
std::vector<std::string> decryptingKeyPaths();

// Owner of a loaded key. Overwrites it with zeros at the end.
class CipherKey {
  public:
    CipherKey() = default;
    ~CipherKey() { wipe(); }
    CipherKey(const CipherKey&) = delete;
    CipherKey& operator=(const CipherKey&) = delete;

    // Reads the key file. After the first success the key is kept and the file is not read again. A file that
    // its group or others can access is an error (kKeyExposed).
    VTPassword::Error load();
    // Replaces the key by that of another file.
    VTPassword::Error loadFrom(const std::string& path);

    // kCipherKeyBytes bytes; zeros before load() has succeeded.
    const unsigned char* bytes() const { return m_bytes.data(); }

  private:
    void wipe();

    std::array<unsigned char, kCipherKeyBytes> m_bytes{};
    bool m_isLoaded = false;
};

// Reads a file of exactly `size` bytes that only its owner can access. kKeyUnreadable leaves errno.
VTPassword::Error readKeyFile(const std::string& path, unsigned char* bytes, std::size_t size);

// Creates such a file with mode 0600; an existing file is never overwritten. False, with the reason in
// `problem`, on a failure; no partly written file is left.
bool createKeyFile(const std::string& path, const unsigned char* bytes, std::size_t size,
                   std::string& problem);

// Initialises libsodium on the first call. False when that failed.
bool initializeSodium();

}  // namespace hostlayer

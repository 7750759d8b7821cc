// The installation's cipher key: 32 bytes in a file that the store names.
#pragma once

#include <array>
#include <string>

#include "VTPassword.h"

namespace hostlayer {

constexpr std::size_t kCipherKeyBytes = 32;

// Holds a key and wipes it.
class CipherKey {
  public:
    CipherKey() = default;
    ~CipherKey() { forget(); }
    CipherKey(const CipherKey&) = delete;
    CipherKey& operator=(const CipherKey&) = delete;

    // Reads the key once; later calls keep it.
    VTPassword::Error load();
    const unsigned char* bytes() const { return m_bytes.data(); }

  private:
    VTPassword::Error readFile(const std::string& path);
    void forget();

    std::array<unsigned char, kCipherKeyBytes> m_bytes{};
    bool m_isLoaded = false;
};

// Starts the cipher library; false when it cannot be used. Cheap after the first call.
bool startCipherLibrary();

}  // namespace hostlayer

#include "CipherKey.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "FileAccess.h"
#include "KeyFileChoice.h"
#include "Store.h"

namespace hostlayer {
namespace {

constexpr const char* kKeyFileSetting = "cipherKeyFile";
constexpr mode_t kGroupAndOthers = S_IRWXG | S_IRWXO;

thread_local const std::string* chosenKeyFile = nullptr;  // null: the one that the store names

}  // namespace

std::string cipherKeyPath() {
    if (chosenKeyFile != nullptr) return *chosenKeyFile;
    const auto store = currentStore();
    const StoreValue* path = store->content ? findValue(store->content->settings, kKeyFileSetting) : nullptr;
    return path != nullptr ? textOf(*path) : std::string();
}

KeyFileChoice::KeyFileChoice(const std::string& file) : m_before(std::exchange(chosenKeyFile, &file)) {}

KeyFileChoice::~KeyFileChoice() {
    chosenKeyFile = m_before;
}

VTPassword::Error CipherKey::load() {
    if (m_isLoaded) return VTPassword::kNoError;
    const std::string path = cipherKeyPath();
    if (path.empty()) return VTPassword::kKeyNotConfigured;
    const VTPassword::Error error = readFile(path);
    m_isLoaded = error == VTPassword::kNoError;
    if (!m_isLoaded) wipe();
    return error;
}

VTPassword::Error CipherKey::readFile(const std::string& path) {
    const Descriptor file = openWithoutBlocking(path);
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) return VTPassword::kKeyUnreadable;
    if (!S_ISREG(status.st_mode)) return VTPassword::kKeyMalformed;
    if ((status.st_mode & kGroupAndOthers) != 0) return VTPassword::kKeyExposed;
    if (status.st_size != static_cast<off_t>(kCipherKeyBytes)) return VTPassword::kKeyMalformed;
    const ssize_t count = readUpTo(file.get(), m_bytes.data(), m_bytes.size());
    if (count < 0) return VTPassword::kKeyUnreadable;
    return count == static_cast<ssize_t>(m_bytes.size()) ? VTPassword::kNoError : VTPassword::kKeyMalformed;
}

void CipherKey::wipe() {
    ::sodium_memzero(m_bytes.data(), m_bytes.size());
}

bool initializeSodium() {
    static const bool isInitialized = ::sodium_init() >= 0;
    return isInitialized;
}

}  // namespace hostlayer

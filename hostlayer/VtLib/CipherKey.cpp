#include "CipherKey.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "FileAccess.h"
#include "HostSetup.h"
#include "Store.h"

namespace hostlayer {
namespace {

constexpr const char* kKeyFileSetting = "cipherKeyFile";
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

thread_local const std::string* chosenFile = nullptr;  // instead of the store's

std::string keyFile() {
    if (chosenFile != nullptr) return *chosenFile;
    const auto store = currentStore();
    const StoreValue* path = store->content ? findValue(store->content->settings, kKeyFileSetting) : nullptr;
    return path != nullptr ? textOf(*path) : std::string();
}

}  // namespace

KeyFileChoice::KeyFileChoice(const std::string& file) : m_before(std::exchange(chosenFile, &file)) {}

KeyFileChoice::~KeyFileChoice() {
    chosenFile = m_before;
}

VTPassword::Error CipherKey::load() {
    if (m_isLoaded) return VTPassword::kNoError;
    const std::string path = keyFile();
    if (path.empty()) return VTPassword::kKeyNotConfigured;
    const VTPassword::Error error = readFile(path);
    m_isLoaded = error == VTPassword::kNoError;
    if (!m_isLoaded) forget();
    return error;
}

VTPassword::Error CipherKey::readFile(const std::string& path) {
    // Not blocking: a pipe put in the file's place must not hold the process up.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) return VTPassword::kKeyUnreadable;
    if (!S_ISREG(status.st_mode)) return VTPassword::kKeyMalformed;
    if ((status.st_mode & kOthers) != 0) return VTPassword::kKeyExposed;
    if (status.st_size != static_cast<off_t>(kCipherKeyBytes)) return VTPassword::kKeyMalformed;
    const ssize_t got = readUpTo(file.get(), m_bytes.data(), m_bytes.size());
    if (got < 0) return VTPassword::kKeyUnreadable;
    return got == static_cast<ssize_t>(m_bytes.size()) ? VTPassword::kNoError : VTPassword::kKeyMalformed;
}

void CipherKey::forget() {
    ::sodium_memzero(m_bytes.data(), m_bytes.size());
}

bool startCipherLibrary() {
    static const bool isStarted = ::sodium_init() >= 0;
    return isStarted;
}

}  // namespace hostlayer

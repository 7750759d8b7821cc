#include "cipher/CipherKey.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "HostSetup.h"
#include "KeyFileChoice.h"
#include "files/FileAccess.h"
#include "store/Store.h"

namespace hostlayer {
namespace {

constexpr const char* kKeyFileSetting = "cipherKeyFile";
constexpr const char* kPreviousKeySetting = "previousKeyFile";
constexpr mode_t kKeyMode = 0600;
constexpr mode_t kGroupAndOthers = S_IRWXG | S_IRWXO;

thread_local const std::string* chosenKeyFile = nullptr;  // null: the one that the store names

// Makes the name of a new file outlast a power failure. False, with errno, on a failure. A folder that may be
// written but not read cannot be synced.
bool syncFolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const Descriptor opened(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return opened ? ::fsync(opened.get()) == 0 : errno == EACCES;
}

std::string setting(const StoreState& store, const char* name) {
    const StoreValue* value = store.content ? findValue(store.content->settings, name) : nullptr;
    return value != nullptr ? textOf(*value) : std::string();
}

}  // namespace

std::string cipherKeyPath() {
    return chosenKeyFile != nullptr ? *chosenKeyFile : setting(*currentStore(), kKeyFileSetting);
}

std::vector<std::string> decryptingKeyPaths() {
    if (chosenKeyFile != nullptr) return {*chosenKeyFile};
    const auto store = currentStore();
    std::vector<std::string> paths = {setting(*store, kKeyFileSetting)};
    if (std::string previous = setting(*store, kPreviousKeySetting); !previous.empty())
        paths.push_back(std::move(previous));
    return paths;
}

KeyFileChoice::KeyFileChoice(const std::string& file) : m_before(std::exchange(chosenKeyFile, &file)) {}

KeyFileChoice::~KeyFileChoice() {
    chosenKeyFile = m_before;
}

VTPassword::Error CipherKey::load() {
    if (m_isLoaded) return VTPassword::kNoError;
    return loadFrom(cipherKeyPath());
}

VTPassword::Error CipherKey::loadFrom(const std::string& path) {
    if (path.empty()) return VTPassword::kKeyNotConfigured;
    const VTPassword::Error error = readKeyFile(path, m_bytes.data(), m_bytes.size());
    m_isLoaded = error == VTPassword::kNoError;
    if (!m_isLoaded) wipe();
    return error;
}

void CipherKey::wipe() {
    ::sodium_memzero(m_bytes.data(), m_bytes.size());
}

VTPassword::Error readKeyFile(const std::string& path, unsigned char* bytes, std::size_t size) {
    const Descriptor file = openWithoutBlocking(path);
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) return VTPassword::kKeyUnreadable;
    if (!S_ISREG(status.st_mode)) return VTPassword::kKeyMalformed;
    if ((status.st_mode & kGroupAndOthers) != 0) return VTPassword::kKeyExposed;
    if (status.st_size != static_cast<off_t>(size)) return VTPassword::kKeyMalformed;
    const ssize_t count = readUpTo(file.get(), bytes, size);
    if (count < 0) return VTPassword::kKeyUnreadable;
    return count == static_cast<ssize_t>(size) ? VTPassword::kNoError : VTPassword::kKeyMalformed;
}

bool createKeyFile(const std::string& path, const unsigned char* bytes, std::size_t size,
                   std::string& problem) {
    const Descriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kKeyMode));
    if (!file) return reportErrno(problem, path);
    const bool isWritten = ::fchmod(file.get(), kKeyMode) == 0 &&
                           writeAll(file.get(), reinterpret_cast<const char*>(bytes), size) &&
                           ::fsync(file.get()) == 0 && syncFolderOf(path);
    if (isWritten) return true;
    reportErrno(problem, path);
    ::unlink(path.c_str());
    return false;
}

bool initializeSodium() {
    static const bool isInitialized = ::sodium_init() >= 0;
    return isInitialized;
}

bool createCipherKeyFile(const std::string& path, std::string& problem) {
    if (!initializeSodium()) {
        problem = cipherErrorText(VTPassword::kCipherUnavailable);
        return false;
    }
    std::array<unsigned char, kCipherKeyBytes> key{};
    ::randombytes_buf(key.data(), key.size());
    const bool isWritten = createKeyFile(path, key.data(), key.size(), problem);
    ::sodium_memzero(key.data(), key.size());
    return isWritten;
}

const char* cipherErrorText(long error) {
    switch (error) {
        case VTPassword::kNoError:
            return "no error";
        case VTPassword::kKeyNotConfigured:
            return "the configuration store names no key file: set cipherKeyFile under [host]";
        case VTPassword::kKeyUnreadable:
            return "the key file that cipherKeyFile names is missing or cannot be read";
        case VTPassword::kKeyExposed:
            return "users other than its owner can access the key file: set its mode to 0600";
        case VTPassword::kKeyMalformed:
            return "the key file is not a regular file of exactly 32 bytes";
        case VTPassword::kBufferTooSmall:
            return "the text does not fit into its buffer";
        case VTPassword::kNotARecord:
            return "the text is not an encrypted record";
        case VTPassword::kRecordCut:
            return "the encrypted record is cut off";
        case VTPassword::kNotAuthentic:
            return "the encrypted record was changed, or encrypted with another key";
        case VTPassword::kWrongKind:
            return "encrypted credentials where a file record is expected, or the reverse";
        case VTPassword::kCipherUnavailable:
            return "the cipher library cannot be initialised";
        default:
            return "unknown cipher error";
    }
}

}  // namespace hostlayer

#include "HostSetup.h"

#include <sodium.h>

#include <array>

#include "CipherKey.h"
#include "Store.h"

namespace hostlayer {
namespace {

std::map<std::string, std::string> textsOf(const StoreKey& key) {
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : key) texts.emplace(name, textOf(value));
    return texts;
}

}  // namespace

StoreReport inspectStore() {
    const auto store = currentStore();
    StoreReport report;
    report.path = store->path;
    report.problem = store->problem;
    report.isInForce = store->content != nullptr;
    if (!report.isInForce) return report;
    report.oddities = store->content->oddities;
    report.settings = textsOf(store->content->settings);
    report.programs = textsOf(store->content->programs);
    for (const auto& [instance, keys] : store->content->instances)
        for (const auto& [key, values] : keys)
            report.instances[instance][key].insert(values.begin(), values.end());
    return report;
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

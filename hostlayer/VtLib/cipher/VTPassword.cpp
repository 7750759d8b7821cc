#include "VTPassword.h"

#include <sodium.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "EvDebug.h"
#include "HostSetup.h"
#include "VtCauses.h"
#include "cipher/Base64.h"
#include "cipher/CipherKey.h"
#include "cipher/Nonces.h"
#include "store/Store.h"

// Format of a record:
//
//     mark base64(nonce[24] ciphertext[n] tag[16])
//
// The mark is four characters: the record's kind and the format's version. It is the associated data of the
// authentication. The cipher is XChaCha20-Poly1305 (draft-irtf-cfrg-xchacha, section 2.3), carried out in its
// two steps: HChaCha20 derives a key from the first 16 bytes of the nonce, ChaCha20-Poly1305 (RFC 8439)
// encrypts with that key. Consecutive records share those 16 bytes, so that the derived key is kept.

namespace {

using hostlayer::kNonceBytes;
using hostlayer::kNoncePrefixBytes;

constexpr std::size_t kTagBytes = crypto_aead_chacha20poly1305_IETF_ABYTES;
constexpr std::size_t kMarkLength = 4;
constexpr std::string_view kCredentialsMark = "ZC1.";
constexpr std::string_view kFileMark = "ZF1.";

bool isAnyMark(std::string_view mark) {
    return mark == kCredentialsMark || mark == kFileMark;
}

const unsigned char* bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

struct VTPassword::Impl {
    ~Impl() { ::sodium_memzero(derivedKey, sizeof derivedKey); }

    Error loadKey();
    const unsigned char* derivedKeyFor(const unsigned char* nonce, const hostlayer::CipherKey& from);
    Error seal(std::string_view mark, const char* plain, char* encrypted, unsigned long* size);
    Error open(std::string_view mark, const char* encrypted, char* plain, unsigned long* size);
    Error decode(std::string_view mark, std::string_view text, std::size_t bufferSize);
    bool decryptRecord(std::string_view mark, char* plain);
    bool decryptWithOtherKey(std::string_view mark, char* plain);

    hostlayer::CipherKey key;                 // encrypts
    hostlayer::CipherKey otherKey;            // decrypts after `key` did not, as long as it does
    hostlayer::CipherKey* openingKey = &key;  // the one of both that decrypted last
    const hostlayer::CipherKey* derivedFrom = nullptr;
    hostlayer::Nonces nonces;
    unsigned char derivedKey[crypto_core_hchacha20_OUTPUTBYTES]{};
    unsigned char derivedKeyPrefix[kNoncePrefixBytes]{};  // the nonce prefix that derivedKey belongs to
    std::vector<unsigned char> record;  // nonce, ciphertext and tag; reused to save allocations
    std::string credentials;            // encrypted, from putEncPwd()
    Error lastError = kNoError;
};

namespace {

// The nonce of the inner ChaCha20-Poly1305: four zero bytes and the last 8 bytes of the record's nonce.
struct InnerNonce {
    explicit InnerNonce(const unsigned char* nonce) { std::memcpy(bytes + 4, nonce + kNoncePrefixBytes, 8); }
    unsigned char bytes[crypto_aead_chacha20poly1305_IETF_NPUBBYTES]{};
};

}  // namespace

VTPassword::Error VTPassword::Impl::loadKey() {
    return hostlayer::initializeSodium() ? key.load() : kCipherUnavailable;
}

const unsigned char* VTPassword::Impl::derivedKeyFor(const unsigned char* nonce,
                                                     const hostlayer::CipherKey& from) {
    if (derivedFrom != &from || std::memcmp(derivedKeyPrefix, nonce, kNoncePrefixBytes) != 0) {
        ::crypto_core_hchacha20(derivedKey, nonce, from.bytes(), /*c=*/nullptr);
        std::memcpy(derivedKeyPrefix, nonce, kNoncePrefixBytes);
        derivedFrom = &from;
    }
    return derivedKey;
}

VTPassword::Error VTPassword::Impl::seal(std::string_view mark, const char* plain, char* encrypted,
                                         unsigned long* size) {
    if (encrypted == nullptr || size == nullptr) return kBufferTooSmall;
    if (const Error error = loadKey(); error != kNoError) return error;
    const std::string_view text(plain != nullptr ? plain : "");
    const std::size_t recordBytes = kNonceBytes + text.size() + kTagBytes;
    const std::size_t length = kMarkLength + hostlayer::base64Length(recordBytes);
    if (length + 1 > *size) return kBufferTooSmall;
    record.resize(recordBytes);
    nonces.next(record.data());
    const InnerNonce inner(record.data());
    ::crypto_aead_chacha20poly1305_ietf_encrypt(record.data() + kNonceBytes, nullptr, bytesOf(text),
                                                text.size(), bytesOf(mark), mark.size(), nullptr, inner.bytes,
                                                derivedKeyFor(record.data(), key));
    mark.copy(encrypted, kMarkLength);
    hostlayer::encodeBase64(record.data(), recordBytes, encrypted + kMarkLength);
    encrypted[length] = '\0';
    *size = length;
    return kNoError;
}

// Decodes the text into `record`. Finds all errors that can be found without the key.
VTPassword::Error VTPassword::Impl::decode(std::string_view mark, std::string_view text,
                                           std::size_t bufferSize) {
    const std::string_view markInText = text.substr(0, kMarkLength);
    if (!isAnyMark(markInText)) return kNotARecord;
    if (markInText != mark) return kWrongKind;
    text.remove_prefix(kMarkLength);
    const std::size_t recordBytes = hostlayer::base64ByteCount(text.size());
    if (recordBytes < kNonceBytes + kTagBytes) return kRecordCut;
    if (recordBytes - kNonceBytes - kTagBytes + 1 > bufferSize) return kBufferTooSmall;
    record.resize(recordBytes);
    return hostlayer::decodeBase64(text, record.data()) ? kNoError : kNotARecord;
}

VTPassword::Error VTPassword::Impl::open(std::string_view mark, const char* encrypted, char* plain,
                                         unsigned long* size) {
    if (plain == nullptr || size == nullptr) return kBufferTooSmall;
    if (const Error error = decode(mark, encrypted != nullptr ? encrypted : "", *size); error != kNoError)
        return error;
    if (const Error error = loadKey(); error != kNoError) return error;
    if (!decryptRecord(mark, plain) && !decryptWithOtherKey(mark, plain)) return kNotAuthentic;
    const std::size_t length = record.size() - kNonceBytes - kTagBytes;
    plain[length] = '\0';
    *size = length;
    return kNoError;
}

// On a failure, libsodium leaves no plain text in the buffer.
bool VTPassword::Impl::decryptRecord(std::string_view mark, char* plain) {
    const InnerNonce inner(record.data());
    return ::crypto_aead_chacha20poly1305_ietf_decrypt(
               reinterpret_cast<unsigned char*>(plain), nullptr, nullptr, record.data() + kNonceBytes,
               record.size() - kNonceBytes, bytesOf(mark), mark.size(), inner.bytes,
               derivedKeyFor(record.data(), *openingKey)) == 0;
}

// While keys are rotated, two keys are in use. The store may have been changed after a key was loaded.
bool VTPassword::Impl::decryptWithOtherKey(std::string_view mark, char* plain) {
    if (std::exchange(openingKey, &key) == &otherKey && decryptRecord(mark, plain)) return true;
    for (const std::string& path : hostlayer::decryptingKeyPaths()) {
        derivedFrom = nullptr;
        if (otherKey.loadFrom(path) != kNoError) continue;
        openingKey = &otherKey;
        if (decryptRecord(mark, plain)) return true;
    }
    openingKey = &key;  // the other one may be unreadable, all zeros
    return false;
}

namespace {

// Logs the error and notes it as a cause. The subject of an error of the key is the key file, or the store
// that names none. `systemError`: errno of a key file that cannot be read.
void report(VTPassword::Error error, int systemError, std::string_view mark) {
    const bool isKeyError = error >= VTPassword::kKeyNotConfigured && error <= VTPassword::kKeyMalformed;
    const bool isRecordOfFile = mark == kFileMark && !isKeyError;
    VtCause cause{.place = isRecordOfFile ? VtCause::kPackage : VtCause::kConfiguration,
                  .systemError = systemError,
                  .text = hostlayer::cipherErrorText(error)};
    if (isKeyError) cause.subject = hostlayer::cipherKeyPath();
    if (error == VTPassword::kKeyNotConfigured) {
        const auto store = hostlayer::currentStore();
        cause.subject = store->path;
        if (!store->content) cause.text = store->problem;  // its settings are not known
    }
    const std::string reason = systemError != 0 ? std::string(": ") + std::strerror(systemError) : "";
    EvDebug().DebugLevel(kErrorDebugLevel, "Cipher: %s%s", cause.text.c_str(), reason.c_str());
    VtNoteCause(cause);
}

// Returns 1 for success. Otherwise reports the error, empties the output buffer and returns 0.
int resultOf(VTPassword::Error error, std::string_view mark, char* output, const unsigned long* size) {
    const int systemError = error == VTPassword::kKeyUnreadable ? errno : 0;
    if (error == VTPassword::kNoError) return 1;
    report(error, systemError, mark);
    if (output != nullptr && size != nullptr && *size > 0) *output = '\0';
    return 0;
}

}  // namespace

VTPassword::VTPassword() : m_impl(std::make_unique<Impl>()) {}

VTPassword::~VTPassword() = default;

void VTPassword::putEncPwd(const char* encrypted) {
    m_impl->credentials = encrypted != nullptr ? encrypted : "";
}

int VTPassword::decrypt(char* plain, unsigned long* size) {
    m_impl->lastError = m_impl->open(kCredentialsMark, m_impl->credentials.c_str(), plain, size);
    return resultOf(m_impl->lastError, kCredentialsMark, plain, size);
}

int VTPassword::encryptPwd(const char* plain, char* encrypted, unsigned long* size) {
    m_impl->lastError = m_impl->seal(kCredentialsMark, plain, encrypted, size);
    return resultOf(m_impl->lastError, kCredentialsMark, encrypted, size);
}

int VTPassword::encrypt(const char* plain, char* encrypted, unsigned long* size) {
    m_impl->lastError = m_impl->seal(kFileMark, plain, encrypted, size);
    return resultOf(m_impl->lastError, kFileMark, encrypted, size);
}

int VTPassword::decrypt(const char* encrypted, char* plain, unsigned long* size) {
    m_impl->lastError = m_impl->open(kFileMark, encrypted, plain, size);
    return resultOf(m_impl->lastError, kFileMark, plain, size);
}

long VTPassword::getLastError() const {
    return m_impl->lastError;
}

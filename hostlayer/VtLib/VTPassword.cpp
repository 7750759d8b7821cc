#include "VTPassword.h"

#include <sodium.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Base64.h"
#include "CipherKey.h"
#include "Nonces.h"

// A record is the text
//
//     mark base64(nonce[24] enciphered[n] tag[16])
//
// whose four-character mark tells the format's version and the record's kind and is authenticated as the
// associated data. The cipher is XChaCha20-Poly1305 (draft-irtf-cfrg-xchacha, section 2.3), taken in its two
// steps: the key derived from a nonce's first 16 bytes is kept, since neighbouring records share it.

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
    ~Impl() { ::sodium_memzero(recordKey, sizeof recordKey); }

    Error prepare();
    const unsigned char* keyFor(const unsigned char* nonce);
    Error seal(std::string_view mark, const char* plain, char* enciphered, unsigned long* size);
    Error open(std::string_view mark, const char* enciphered, char* plain, unsigned long* size);
    Error decode(std::string_view mark, std::string_view text, std::size_t room);

    hostlayer::CipherKey key;
    hostlayer::Nonces nonces;
    unsigned char recordKey[crypto_core_hchacha20_OUTPUTBYTES]{};  // derived for keyPrefix
    unsigned char keyPrefix[kNoncePrefixBytes]{};
    bool hasRecordKey = false;
    std::vector<unsigned char> record;  // nonce, enciphered bytes, tag: nothing plain
    std::string credentials;            // as handed in, enciphered
    Error lastError = kNoError;
};

namespace {

// The nonce's last 8 bytes, after four of zero, are the nonce under the derived key.
struct InnerNonce {
    explicit InnerNonce(const unsigned char* nonce) { std::memcpy(bytes + 4, nonce + kNoncePrefixBytes, 8); }
    unsigned char bytes[crypto_aead_chacha20poly1305_IETF_NPUBBYTES]{};
};

}  // namespace

VTPassword::Error VTPassword::Impl::prepare() {
    return hostlayer::startCipherLibrary() ? key.load() : kCipherUnavailable;
}

const unsigned char* VTPassword::Impl::keyFor(const unsigned char* nonce) {
    if (!hasRecordKey || std::memcmp(keyPrefix, nonce, kNoncePrefixBytes) != 0) {
        ::crypto_core_hchacha20(recordKey, nonce, key.bytes(), nullptr);
        std::memcpy(keyPrefix, nonce, kNoncePrefixBytes);
        hasRecordKey = true;
    }
    return recordKey;
}

VTPassword::Error VTPassword::Impl::seal(std::string_view mark, const char* plain, char* enciphered,
                                         unsigned long* size) {
    if (enciphered == nullptr || size == nullptr) return kBufferTooSmall;
    if (const Error error = prepare(); error != kNoError) return error;
    const std::string_view text(plain != nullptr ? plain : "");
    const std::size_t recordBytes = kNonceBytes + text.size() + kTagBytes;
    const std::size_t length = kMarkLength + hostlayer::base64Length(recordBytes);
    if (length + 1 > *size) return kBufferTooSmall;
    record.resize(recordBytes);
    nonces.next(record.data());
    const InnerNonce inner(record.data());
    ::crypto_aead_chacha20poly1305_ietf_encrypt(record.data() + kNonceBytes, nullptr, bytesOf(text),
                                                text.size(), bytesOf(mark), mark.size(), nullptr, inner.bytes,
                                                keyFor(record.data()));
    mark.copy(enciphered, kMarkLength);
    hostlayer::encodeBase64(record.data(), recordBytes, enciphered + kMarkLength);
    enciphered[length] = '\0';
    *size = length;
    return kNoError;
}

// Text to record; everything that can be told without the key is told here.
VTPassword::Error VTPassword::Impl::decode(std::string_view mark, std::string_view text, std::size_t room) {
    const std::string_view found = text.substr(0, kMarkLength);
    if (!isAnyMark(found)) return kNotARecord;
    if (found != mark) return kWrongKind;
    text.remove_prefix(kMarkLength);
    const std::size_t recordBytes = hostlayer::base64ByteCount(text.size());
    if (recordBytes < kNonceBytes + kTagBytes) return kRecordCut;
    if (recordBytes - kNonceBytes - kTagBytes + 1 > room) return kBufferTooSmall;
    record.resize(recordBytes);
    return hostlayer::decodeBase64(text, record.data()) ? kNoError : kNotARecord;
}

VTPassword::Error VTPassword::Impl::open(std::string_view mark, const char* enciphered, char* plain,
                                         unsigned long* size) {
    if (plain == nullptr || size == nullptr) return kBufferTooSmall;
    if (const Error error = decode(mark, enciphered != nullptr ? enciphered : "", *size); error != kNoError)
        return error;
    if (const Error error = prepare(); error != kNoError) return error;
    const InnerNonce inner(record.data());
    const std::size_t length = record.size() - kNonceBytes - kTagBytes;
    const int result = ::crypto_aead_chacha20poly1305_ietf_decrypt(
        reinterpret_cast<unsigned char*>(plain), nullptr, nullptr, record.data() + kNonceBytes,
        length + kTagBytes, bytesOf(mark), mark.size(), inner.bytes, keyFor(record.data()));
    if (result != 0) return kNotAuthentic;  // the library has written nothing plain
    plain[length] = '\0';
    *size = length;
    return kNoError;
}

namespace {

// A failure leaves an empty text in the output.
int resultOf(VTPassword::Error error, char* output, const unsigned long* size) {
    if (error != VTPassword::kNoError && output != nullptr && size != nullptr && *size > 0) *output = '\0';
    return error == VTPassword::kNoError ? 1 : 0;
}

}  // namespace

VTPassword::VTPassword() : m_impl(std::make_unique<Impl>()) {}

VTPassword::~VTPassword() = default;

void VTPassword::putEncPwd(const char* enciphered) {
    m_impl->credentials = enciphered != nullptr ? enciphered : "";
}

int VTPassword::decrypt(char* plain, unsigned long* size) {
    m_impl->lastError = m_impl->open(kCredentialsMark, m_impl->credentials.c_str(), plain, size);
    return resultOf(m_impl->lastError, plain, size);
}

int VTPassword::encryptPwd(const char* plain, char* enciphered, unsigned long* size) {
    m_impl->lastError = m_impl->seal(kCredentialsMark, plain, enciphered, size);
    return resultOf(m_impl->lastError, enciphered, size);
}

int VTPassword::encrypt(const char* plain, char* enciphered, unsigned long* size) {
    m_impl->lastError = m_impl->seal(kFileMark, plain, enciphered, size);
    return resultOf(m_impl->lastError, enciphered, size);
}

int VTPassword::decrypt(const char* enciphered, char* plain, unsigned long* size) {
    m_impl->lastError = m_impl->open(kFileMark, enciphered, plain, size);
    return resultOf(m_impl->lastError, plain, size);
}

long VTPassword::getLastError() const {
    return m_impl->lastError;
}

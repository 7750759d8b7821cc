#include "PackageSeal.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "HostSettings.h"
#include "HostSetup.h"
#include "cipher/Base64.h"
#include "cipher/CipherKey.h"

namespace hostlayer {
namespace {

constexpr std::string_view kMark = "#PACKAGE_SEAL_1# ";
constexpr std::string_view kUnsigned = "-";
constexpr std::string_view kLineEnd = "\n";
constexpr std::string_view kCodePurpose = "package seal, version 1";
constexpr std::string_view kSignaturePurpose = "package signature, version 1";
constexpr char kSealOptional[] = "0";

using Bytes = std::vector<unsigned char>;
using Hash = std::array<unsigned char, crypto_generichash_BYTES>;

constexpr std::size_t kPublicKeyBytes = crypto_sign_PUBLICKEYBYTES;
constexpr std::size_t kSignatureBytes = crypto_sign_BYTES;

const unsigned char* bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

// ---- Hashes --------------------------------------------------------------------------------------------

class Hasher {
  public:
    // A null key hashes without one; else it has as many bytes as a hash.
    explicit Hasher(const unsigned char* key = nullptr) {
        ::crypto_generichash_init(&m_state, key, key == nullptr ? 0 : std::tuple_size_v<Hash>,
                                  std::tuple_size_v<Hash>);
    }
    ~Hasher() { ::sodium_memzero(&m_state, sizeof m_state); }
    Hasher(const Hasher&) = delete;
    Hasher& operator=(const Hasher&) = delete;

    void add(std::string_view text) { ::crypto_generichash_update(&m_state, bytesOf(text), text.size()); }
    void addNumber(std::uint64_t number) {
        std::array<unsigned char, 8> littleEndian{};
        for (unsigned char& byte : littleEndian) {
            byte = static_cast<unsigned char>(number & 0xFF);
            number >>= 8;
        }
        ::crypto_generichash_update(&m_state, littleEndian.data(), littleEndian.size());
    }
    // A text whose end is a part of the hash.
    void addBounded(std::string_view text) {
        addNumber(text.size());
        add(text);
    }
    Hash current() const {
        crypto_generichash_state state = m_state;
        Hash hash{};
        ::crypto_generichash_final(&state, hash.data(), hash.size());
        ::sodium_memzero(&state, sizeof state);
        return hash;
    }

  private:
    crypto_generichash_state m_state{};
};

// Hashes of the lines behind a seal.
class PackageDigest {
  public:
    void addLine(std::string_view record, std::string_view lineEnd, std::string_view plain) {
        m_lines.add(record);
        m_lines.add(lineEnd);
        if (!record.empty()) m_texts.addBounded(plain);
    }

    // Empty if the key of the file cannot be used.
    std::optional<Hash> code(const PackageSeal& seal, const std::string& keyFile,
                             VTPassword::Error& error) const {
        CipherKey key;
        error = initializeSodium() ? key.loadFrom(keyFile) : VTPassword::kCipherUnavailable;
        if (error != VTPassword::kNoError) return std::nullopt;
        Hasher derivation(key.bytes());
        derivation.add(kCodePurpose);
        Hash derivedKey = derivation.current();
        Hasher hasher(derivedKey.data());
        ::sodium_memzero(derivedKey.data(), derivedKey.size());
        addIdentity(hasher, seal, m_lines.current());
        return hasher.current();
    }
    // What a signature is made of.
    Hash message(const PackageSeal& seal) const {
        Hasher hasher;
        hasher.add(kSignaturePurpose);
        addIdentity(hasher, seal, m_texts.current());
        return hasher.current();
    }

  private:
    static void addIdentity(Hasher& hasher, const PackageSeal& seal, const Hash& content) {
        hasher.addNumber(seal.version);
        hasher.addBounded(seal.name);
        hasher.addBounded({reinterpret_cast<const char*>(content.data()), content.size()});
    }

    Hasher m_lines;
    Hasher m_texts;
};

// ---- Text of the seal ----------------------------------------------------------------------------------

std::string base64Of(const unsigned char* bytes, std::size_t size) {
    std::string text(base64Length(size), '\0');
    encodeBase64(bytes, size, text.data());
    return text;
}

// Empty unless the text encodes exactly `size` bytes.
Bytes bytesOfBase64(std::string_view text, std::size_t size) {
    Bytes bytes(size);
    const bool isValid = text.size() == base64Length(size) && decodeBase64(text, bytes.data());
    return isValid ? bytes : Bytes();
}

// What is wrong with a key file that must have `size` bytes. cipherErrorText() speaks of the file that
// cipherKeyFile names.
std::string keyFileProblem(VTPassword::Error error, std::size_t size) {
    switch (error) {
        case VTPassword::kKeyUnreadable:
            return "it is missing or cannot be read";
        case VTPassword::kKeyExposed:
            return "others than its owner may read it";
        case VTPassword::kKeyMalformed:
            return "it does not hold exactly " + std::to_string(size) + " bytes";
        default:
            return cipherErrorText(error);
    }
}

std::string_view nextWord(std::string_view& text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

struct ParsedSeal : PackageSeal {
    Bytes code;
    Bytes signatureBytes;  // signer and signature
};

std::optional<ParsedSeal> parseSeal(std::string_view text) {
    text.remove_prefix(kMark.size());
    if (!text.ends_with(kLineEnd)) return std::nullopt;
    text.remove_suffix(kLineEnd.size());
    ParsedSeal seal;
    const std::string_view version = nextWord(text);
    const auto [end, error] = std::from_chars(version.data(), version.data() + version.size(), seal.version);
    seal.code = bytesOfBase64(nextWord(text), std::tuple_size_v<Hash>);
    const std::string_view signature = nextWord(text);
    seal.name = text;
    if (error != std::errc() || end != version.data() + version.size() || seal.code.empty() ||
        seal.name.empty())
        return std::nullopt;
    if (signature == kUnsigned) return seal;
    seal.signature = signature;
    seal.signatureBytes = bytesOfBase64(signature, kPublicKeyBytes + kSignatureBytes);
    if (seal.signatureBytes.empty()) return std::nullopt;
    seal.signer = base64Of(seal.signatureBytes.data(), kPublicKeyBytes);
    return seal;
}

std::vector<std::string_view> entriesOf(std::string_view trustedSigners) {
    constexpr std::string_view kSeparators = " ,";
    std::vector<std::string_view> entries;
    while (!trustedSigners.empty()) {
        const std::size_t end = std::min(trustedSigners.find_first_of(kSeparators), trustedSigners.size());
        if (end > 0) entries.push_back(trustedSigners.substr(0, end));
        trustedSigners.remove_prefix(std::min(end + 1, trustedSigners.size()));
    }
    return entries;
}

bool isPublicKey(std::string_view text) {
    return !bytesOfBase64(text, kPublicKeyBytes).empty();
}

bool isTrusted(const std::string& signer, std::string_view trusted) {
    const std::vector<std::string_view> entries = entriesOf(trusted);
    return std::find(entries.begin(), entries.end(), signer) != entries.end();
}

// Why a signed or unsigned package is refused.
std::string untrusted(const std::string& signer, std::string_view trusted) {
    if (signer.empty()) return "the package is not signed, and the store names trusted signers";
    const std::string problem = "the package's signer is not one of the store's trusted signers";
    const std::string_view unusable = unusableSigner(trusted);
    return unusable.empty() ? problem
                            : problem + ", of which '" + std::string(unusable) + "' is no public key";
}

}  // namespace

std::string_view unusableSigner(std::string_view list) {
    const std::vector<std::string_view> entries = entriesOf(list);
    const auto unusable = std::find_if_not(entries.begin(), entries.end(), isPublicKey);
    if (unusable != entries.end()) return *unusable;
    return entries.empty() ? list : std::string_view();
}

bool isSealText(std::string_view plain) {
    return plain.substr(0, kMark.size()) == kMark;
}

// ---- Check ---------------------------------------------------------------------------------------------

struct PackageSealCheck::Impl {
    std::optional<ParsedSeal> seal;
    std::optional<PackageDigest> digest;  // of a sealed package
    bool isFirstLine = true;
    bool isMalformed = false;
    bool isMisplaced = false;
};

PackageSealCheck::PackageSealCheck() : m_impl(std::make_unique<Impl>()) {}

PackageSealCheck::~PackageSealCheck() = default;

bool PackageSealCheck::addLine(std::string_view record, std::string_view lineEnd, std::string_view plain) {
    Impl& impl = *m_impl;
    const bool isFirst = std::exchange(impl.isFirstLine, false);
    if (!isSealText(plain)) {
        if (impl.digest) impl.digest->addLine(record, lineEnd, plain);
        return true;
    }
    impl.isMisplaced = impl.isMisplaced || !isFirst || lineEnd != kLineEnd;
    if (!isFirst) return false;
    impl.seal = parseSeal(plain);
    impl.isMalformed = !impl.seal;
    impl.digest.emplace();
    return false;
}

std::string PackageSealCheck::sealProblem() {
    const Impl& impl = *m_impl;
    if (impl.isMisplaced) return "a seal is not the first line of the package";
    if (impl.isMalformed) return "the package's seal is malformed, or of a newer version";
    if (!impl.seal) return {};
    const std::vector<std::string> keyFiles = decryptingKeyPaths();
    std::string unusableKey;  // why the first key that cannot be used cannot be
    const auto isCodeOf = [&](const std::string& keyFile) {
        VTPassword::Error error = VTPassword::kNoError;
        const std::optional<Hash> code = impl.digest->code(*impl.seal, keyFile, error);
        if (!code && unusableKey.empty())
            unusableKey = keyFile == keyFiles.front()
                              ? cipherErrorText(error)
                              : "the previous key [" + keyFile +
                                    "] cannot be used: " + keyFileProblem(error, kCipherKeyBytes);
        return code && ::sodium_memcmp(code->data(), impl.seal->code.data(), code->size()) == 0;
    };
    const bool isSealed = std::any_of(keyFiles.begin(), keyFiles.end(), isCodeOf);
    if (!isSealed && !unusableKey.empty()) return unusableKey;
    if (!isSealed)
        return "the package differs from what was sealed: records were removed, added, moved or exchanged";
    if (impl.seal->signatureBytes.empty()) return {};
    const Hash message = impl.digest->message(*impl.seal);
    const unsigned char* signer = impl.seal->signatureBytes.data();
    const bool isValid =
        ::crypto_sign_verify_detached(signer + kPublicKeyBytes, message.data(), message.size(), signer) == 0;
    return isValid ? "" : "the package's signature is not valid";
}

std::string PackageSealCheck::problem(const std::string& name) {
    if (std::string broken = sealProblem(); !broken.empty()) return broken;
    const PackageSeal* found = seal();
    const std::string trusted = hostSetting("trustedSigners", "");
    if (found == nullptr && (!trusted.empty() || hostSetting("requireSeal", kSealOptional) != kSealOptional))
        return "the package has no seal, and the store requires one";
    if (found != nullptr && found->name != name)
        return "the package was sealed under the name '" + found->name + "'";
    if (!trusted.empty() && !isTrusted(found->signer, trusted)) return untrusted(found->signer, trusted);
    return {};
}

const PackageSeal* PackageSealCheck::seal() const {
    return m_impl->seal ? &*m_impl->seal : nullptr;
}

// ---- Sealing -------------------------------------------------------------------------------------------

struct PackageSealer::Impl {
    ~Impl() { ::sodium_memzero(signingKey.data(), signingKey.size()); }

    PackageSeal seal;
    PackageDigest digest;
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> signingKey{};
    bool isSigned = false;
};

PackageSealer::PackageSealer(PackageSeal seal) : m_impl(std::make_unique<Impl>()) {
    m_impl->seal = std::move(seal);
}

PackageSealer::~PackageSealer() = default;

bool PackageSealer::setSigningKey(const std::string& file, std::string& problem) {
    const VTPassword::Error error =
        initializeSodium() ? readKeyFile(file, m_impl->signingKey.data(), m_impl->signingKey.size())
                           : VTPassword::kCipherUnavailable;
    m_impl->isSigned = error == VTPassword::kNoError;
    if (!m_impl->isSigned) problem = keyFileProblem(error, m_impl->signingKey.size());
    return m_impl->isSigned;
}

void PackageSealer::addLine(std::string_view record, std::string_view plain) {
    m_impl->digest.addLine(record, kLineEnd, plain);
}

bool PackageSealer::makeText(std::string& text, std::string& problem) const {
    const PackageSeal& seal = m_impl->seal;
    VTPassword::Error error = VTPassword::kNoError;
    const std::optional<Hash> code = m_impl->digest.code(seal, cipherKeyPath(), error);
    if (!code) {
        problem = cipherErrorText(error);
        return false;
    }
    std::string signature = seal.signature.empty() ? std::string(kUnsigned) : seal.signature;
    if (m_impl->isSigned) {
        std::array<unsigned char, kPublicKeyBytes + kSignatureBytes> bytes{};
        const Hash message = m_impl->digest.message(seal);
        ::crypto_sign_ed25519_sk_to_pk(bytes.data(), m_impl->signingKey.data());
        ::crypto_sign_detached(bytes.data() + kPublicKeyBytes, nullptr, message.data(), message.size(),
                               m_impl->signingKey.data());
        signature = base64Of(bytes.data(), bytes.size());
    }
    text = std::string(kMark) + std::to_string(seal.version) + " " + base64Of(code->data(), code->size()) +
           " " + signature + " " + seal.name + std::string(kLineEnd);
    return true;
}

std::string createSigningKeyFile(const std::string& path, std::string& problem) {
    if (!initializeSodium()) {
        problem = cipherErrorText(VTPassword::kCipherUnavailable);
        return {};
    }
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey{};
    std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secretKey{};
    ::crypto_sign_keypair(publicKey.data(), secretKey.data());
    const bool isWritten = createKeyFile(path, secretKey.data(), secretKey.size(), problem);
    ::sodium_memzero(secretKey.data(), secretKey.size());
    return isWritten ? base64Of(publicKey.data(), publicKey.size()) : "";
}

}  // namespace hostlayer

std::unique_ptr<VtSealCheck> VtStartSealCheck() {
    return std::make_unique<hostlayer::PackageSealCheck>();
}

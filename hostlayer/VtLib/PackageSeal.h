// Seal of a package: the package's first record. Programs that know no seals ignore it, because it comes
// before the first marker line. Its text is a line of its own:
//
//     #PACKAGE_SEAL_1# version base64(code[32]) base64(signer[32] signature[64]) name
//
// with "-" in place of the signer and signature of an unsigned package. The code is a keyed BLAKE2b hash of
// all lines that follow the seal, line ends included, with name and version; its key is derived from the
// cipher key. The Ed25519 signature covers name, version and the decrypted records: it stays valid when the
// package is encrypted with another key. Exported by libVtLib.so.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "PlatformExport.h"
#include "VtPackageSeal.h"

namespace hostlayer {

struct PackageSeal {
    std::uint64_t version = 0;
    std::string name{};       // of the package that was sealed
    std::string signer{};     // public key in base64; empty without a signature
    std::string signature{};  // signer and signature in base64, as in the text; empty without
};

// True for the text of a seal's record, which a package may hold at its beginning only.
VT_PLATFORM_EXPORT bool isSealText(std::string_view plain);

// Returns the first entry of `list`, a value of trustedSigners, that is not a public key in base64; empty if
// every entry is one. A list that has separators only is returned whole. The result points into `list`.
VT_PLATFORM_EXPORT std::string_view unusableSigner(std::string_view list);

// Check of a package's seal with the key and the settings requireSeal and trustedSigners of the store.
class VT_PLATFORM_EXPORT PackageSealCheck : public VtSealCheck {
  public:
    PackageSealCheck();
    ~PackageSealCheck() override;
    bool addLine(std::string_view record, std::string_view lineEnd, std::string_view plain) override;
    // Checks the seal, if there is one, and whether the settings accept the package.
    std::string problem(const std::string& name) override;
    // Checks the seal alone: a package may have another name, no seal or no trusted signer.
    std::string sealProblem();
    // The package's seal, null without one. Owned by the check. Not verified before sealProblem() or
    // problem() has returned "".
    const PackageSeal* seal() const;

  private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// Maker of the seal of a package whose lines are written one after the other.
class VT_PLATFORM_EXPORT PackageSealer {
  public:
    // `seal` has name and version, and the signature to keep, if any.
    explicit PackageSealer(PackageSeal seal);
    ~PackageSealer();
    PackageSealer(const PackageSealer&) = delete;
    PackageSealer& operator=(const PackageSealer&) = delete;

    // Signs the package with the key of that file. False, with the reason in `problem`, if it cannot be used.
    bool setSigningKey(const std::string& file, std::string& problem);
    // Takes a line that follows the seal: the record without its line end ("\n"), and its text.
    void addLine(std::string_view record, std::string_view plain);
    // Builds the text of the seal's record. Its length depends on name, version and the presence of a
    // signature only. False, with the reason in `problem`, if the cipher key cannot be used.
    bool makeText(std::string& text, std::string& problem) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// Creates a file with a new signing key, mode 0600, and returns its public key in base64, which
// trustedSigners lists. An existing file is never overwritten. Empty, with the reason in `problem`, on a
// failure.
VT_PLATFORM_EXPORT std::string createSigningKeyFile(const std::string& path, std::string& problem);

}  // namespace hostlayer

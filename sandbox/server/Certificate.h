// Certificate and private key of a server, in PEM files.
#pragma once

#include <filesystem>
#include <vector>

#include "Tls.h"

namespace server {

struct CertificateFiles {
    std::filesystem::path certificate;  // may be followed by the intermediate certificates
    std::filesystem::path key;
};

// Returns a context for TLS 1.2 up to a version in OpenSSL's numbers. Given host names and IP addresses,
// first creates a self-signed certificate for them and its key (both of mode 0600), unless the files hold a
// pair that is valid for these names and for another 30 days. Throws std::runtime_error.
tds::TlsContext openTls(const CertificateFiles& files, const std::vector<std::string>& selfSignedNames,
                        int newestTls);

}  // namespace server

// Certificate and private key of a server, in PEM files.
#pragma once

#include <filesystem>
#include <vector>

#include "FileDescriptor.h"
#include "Tls.h"

namespace server {

struct CertificateFiles {
    std::filesystem::path certificate;  // may be followed by the intermediate certificates
    std::filesystem::path key;
};

// While the result lives, other processes that lock the same certificate wait: none sees a certificate with
// the key of another one. Throws std::runtime_error.
FileDescriptor lockCertificate(const CertificateFiles& files);

// Creates a self-signed certificate for host names and IP addresses, and its key (mode 0600), unless the
// files hold a pair that is valid for these names and for another 30 days. Throws std::runtime_error.
void createSelfSigned(const CertificateFiles& files, const std::vector<std::string>& names);

// Returns a context for TLS 1.2 up to a version in OpenSSL's numbers. Throws std::runtime_error.
tds::TlsContext loadTlsContext(const CertificateFiles& files, int newestTls);

}  // namespace server

#include "Certificate.h"

#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <sys/file.h>

#include <cstring>
#include <ctime>

#include "OpenFile.h"
#include "types/Text.h"

namespace server {
namespace {

constexpr long kDay = 24L * 60 * 60;  // seconds
constexpr long kValidity = 365 * kDay;
constexpr long kRenewalPeriod = 30 * kDay;  // before the end of the validity
constexpr long kClockTolerance = kDay;      // of clients whose clock is behind

using Certificate = std::unique_ptr<X509, tsql::Deleter<&X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, tsql::Deleter<&EVP_PKEY_free>>;
using Address = std::unique_ptr<ASN1_OCTET_STRING, tsql::Deleter<&ASN1_OCTET_STRING_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, tsql::Deleter<&X509_EXTENSION_free>>;

[[noreturn]] void throwTlsError(const std::string& what) {
    throw std::runtime_error(what + ": " + tds::takeTlsErrors());
}

bool isUsable(const CertificateFiles& files, const std::vector<std::string>& names) {
    const OpenFile file(files.certificate.c_str(), "r"), keyFile(files.key.c_str(), "r");
    if (!file.isOpen() || !keyFile.isOpen()) return false;
    const Key key(PEM_read_PrivateKey(keyFile.get(), nullptr, nullptr, nullptr));
    const Certificate certificate(PEM_read_X509(file.get(), nullptr, nullptr, nullptr));
    std::time_t renewal = std::time(nullptr) + kRenewalPeriod;
    return certificate && key && X509_check_private_key(certificate.get(), key.get()) == 1 &&
           X509_cmp_time(X509_get0_notAfter(certificate.get()), &renewal) > 0 &&
           std::ranges::all_of(names, [&](const std::string& name) {
               return X509_check_ip_asc(certificate.get(), name.c_str(), 0) == 1 ||
                      X509_check_host(certificate.get(), name.c_str(), name.size(), 0, nullptr) == 1;
           });
}

void addExtension(X509& certificate, int type, const std::string& value) {
    const Extension extension(X509V3_EXT_conf_nid(nullptr, nullptr, type, value.c_str()));
    if (!extension || X509_add_ext(&certificate, extension.get(), -1) != 1)
        throwTlsError("the certificate cannot have the extension " + value);
}

Certificate makeCertificate(EVP_PKEY& key, const std::vector<std::string>& names) {
    Certificate certificate(X509_new());
    if (!certificate) throw std::bad_alloc();
    X509& x509 = *certificate;
    X509_set_version(&x509, X509_VERSION_3);
    std::uint32_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(&x509), serial);
    X509_gmtime_adj(X509_getm_notBefore(&x509), -kClockTolerance);
    X509_gmtime_adj(X509_getm_notAfter(&x509), kValidity);
    X509_NAME* const subject = X509_get_subject_name(&x509);
    constexpr unsigned char kCommonName[] = "tsqlbox";
    X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8, kCommonName, -1, -1, 0);
    X509_set_issuer_name(&x509, subject);
    X509_set_pubkey(&x509, &key);
    addExtension(x509, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(x509, NID_ext_key_usage, "serverAuth");
    const auto kind = [](const std::string& name) {
        return (Address(a2i_IPADDRESS(name.c_str())) ? "IP:" : "DNS:") + name;
    };
    addExtension(x509, NID_subject_alt_name, tsql::commaList(names, kind));
    if (X509_sign(&x509, &key, EVP_sha256()) == 0) throwTlsError("the certificate cannot be signed");
    return certificate;
}

template <typename Write>
void replaceFile(const std::filesystem::path& path, Write write) {
    constexpr mode_t kPrivate = 0600;
    const std::filesystem::path replacement = path.string() + ".new";
    ::unlink(replacement.c_str());
    const OpenFile file(FileDescriptor(replacement.c_str(), O_WRONLY | O_CREAT | O_EXCL, kPrivate), "w");
    if (!file.isOpen()) throw std::runtime_error(replacement.string() + ": " + std::strerror(errno));
    const bool isWritten = write(file.get()) == 1 && std::fflush(file.get()) == 0;
    if (!isWritten) throw std::runtime_error(replacement.string() + " cannot be written");
    std::filesystem::rename(replacement, path);
}

void createSelfSigned(const CertificateFiles& files, const std::vector<std::string>& names) {
    const Key key(EVP_EC_gen("P-256"));
    if (!key) throwTlsError("no key can be generated");
    const Certificate certificate = makeCertificate(*key, names);
    replaceFile(files.key, [&](std::FILE* file) {
        return PEM_write_PrivateKey(file, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
    replaceFile(files.certificate, [&](std::FILE* file) { return PEM_write_X509(file, certificate.get()); });
}

}  // namespace

tds::TlsContext openTls(const CertificateFiles& files, const std::vector<std::string>& selfSignedNames,
                        int newestTls) {
    // Other processes that open the same files wait: none sees a certificate with the key of another one.
    const std::filesystem::path folder = std::filesystem::absolute(files.certificate).parent_path();
    const FileDescriptor lock(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (!lock.isOpen() || ::flock(lock.get(), LOCK_EX) != 0)
        throw std::runtime_error("the folder of " + files.certificate.string() + ": " + std::strerror(errno));
    if (!selfSignedNames.empty() && !isUsable(files, selfSignedNames))
        createSelfSigned(files, selfSignedNames);
    tds::TlsContext context(SSL_CTX_new(TLS_server_method()));
    if (!context) throw std::bad_alloc();
    SSL_CTX_set_min_proto_version(context.get(), std::min(newestTls, TLS1_2_VERSION));
    if (newestTls < TLS1_2_VERSION) SSL_CTX_set_cipher_list(context.get(), "ALL:@SECLEVEL=0");  // SHA-1
    SSL_CTX_set_max_proto_version(context.get(), newestTls);
    // A client ends the handshake of TLS 1.3 before it could read a ticket from a PRELOGIN packet.
    SSL_CTX_set_num_tickets(context.get(), 0);
    SSL_CTX_set_options(context.get(), SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_TICKET);
    SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_OFF);
    if (SSL_CTX_use_certificate_chain_file(context.get(), files.certificate.c_str()) != 1)
        throwTlsError("the certificate " + files.certificate.string() + " cannot be used");
    if (SSL_CTX_use_PrivateKey_file(context.get(), files.key.c_str(), SSL_FILETYPE_PEM) != 1)
        throwTlsError("the key " + files.key.string() + " cannot be used");
    return context;
}

}  // namespace server

#include "TlsHandshake.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <memory>
#include <new>

namespace hostlayer {
namespace {

template <auto Free>
struct Deleter {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Context = std::unique_ptr<SSL_CTX, Deleter<&SSL_CTX_free>>;
using Session = std::unique_ptr<SSL, Deleter<&SSL_free>>;
using Names = std::unique_ptr<GENERAL_NAMES, Deleter<&GENERAL_NAMES_free>>;

std::time_t timeOf(const ASN1_TIME* time) {
    std::tm parts{};
    return ASN1_TIME_to_tm(time, &parts) == 1 ? ::timegm(&parts) : 0;
}

std::string dateOf(const ASN1_TIME* time) {
    const std::time_t seconds = timeOf(time);
    std::tm parts{};
    char text[sizeof "YYYY-MM-DD"] = "";
    if (::gmtime_r(&seconds, &parts) != nullptr) std::strftime(text, sizeof text, "%F", &parts);
    return text;
}

// Removes control characters, which a certificate may hold.
std::string printable(std::string text) {
    std::erase_if(text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
    return text;
}

std::string nameOf(const GENERAL_NAME& name) {
    int type = 0;
    const void* const value = GENERAL_NAME_get0_value(&name, &type);
    const auto* const text = static_cast<const ASN1_STRING*>(value);
    if (type == GEN_DNS)
        return printable({reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
                          static_cast<std::size_t>(ASN1_STRING_length(text))});
    if (type != GEN_IPADD) return "";
    char address[INET6_ADDRSTRLEN] = "";
    constexpr int kIpv4Size = 4;
    const int family = ASN1_STRING_length(text) == kIpv4Size ? AF_INET : AF_INET6;
    const bool isWhole = family == AF_INET || ASN1_STRING_length(text) == int{sizeof(in6_addr)};
    return isWhole && ::inet_ntop(family, ASN1_STRING_get0_data(text), address, sizeof address) != nullptr
               ? address
               : "";
}

std::string namesOf(X509* certificate) {
    constexpr int kMostNames = 5;
    const Names names(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)));
    const int count = names ? sk_GENERAL_NAME_num(names.get()) : 0;
    std::string text;
    for (int i = 0; i < count && i < kMostNames; ++i)
        text += (i == 0 ? "" : ", ") + nameOf(*sk_GENERAL_NAME_value(names.get(), i));
    if (count > kMostNames) text += ", ...";
    return text.empty() ? "another server" : text;
}

std::string issuerOf(X509* certificate) {
    char name[256] = "";
    X509_NAME_oneline(X509_get_issuer_name(certificate), name, sizeof name);
    return printable(name);
}

// One problem of a certificate, in the order in which OpenSSL finds them.
std::string problemText(int error, X509* certificate, const std::string& host) {
    switch (error) {
        case X509_V_ERR_CERT_HAS_EXPIRED:
            return "has expired on " + dateOf(X509_get0_notAfter(certificate));
        case X509_V_ERR_CERT_NOT_YET_VALID:
            return "is not valid before " + dateOf(X509_get0_notBefore(certificate));
        case X509_V_ERR_HOSTNAME_MISMATCH:
        case X509_V_ERR_IP_ADDRESS_MISMATCH:
            return "is for " + namesOf(certificate) + ", not for " + host;
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
            return "is from an unknown authority (" + issuerOf(certificate) + ")";
        default:
            return X509_verify_cert_error_string(error);
    }
}

struct Verification {
    std::string host;
    std::string problems;
};

// Notes a problem and continues, so that all are found.
int noteProblem(int isGood, X509_STORE_CTX* store) {
    if (isGood == 1) return 1;
    const auto* const ssl =
        static_cast<SSL*>(X509_STORE_CTX_get_ex_data(store, SSL_get_ex_data_X509_STORE_CTX_idx()));
    Verification& verification = *static_cast<Verification*>(SSL_get_app_data(ssl));
    const std::string problem = problemText(X509_STORE_CTX_get_error(store),
                                            X509_STORE_CTX_get_current_cert(store), verification.host);
    std::string& problems = verification.problems;
    if (problems.find(problem) == std::string::npos) problems += (problems.empty() ? "" : ", and ") + problem;
    return 1;
}

Context makeContext(const std::string& caFile) {
    Context context(SSL_CTX_new(TLS_client_method()));
    if (!context) throw std::bad_alloc();
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, noteProblem);
    X509_VERIFY_PARAM_set_flags(SSL_CTX_get0_param(context.get()), X509_V_FLAG_PARTIAL_CHAIN);
    const bool isLoaded = caFile.empty() ? SSL_CTX_set_default_verify_paths(context.get()) == 1
                                         : SSL_CTX_load_verify_file(context.get(), caFile.c_str()) == 1;
    ERR_clear_error();
    if (!isLoaded) throw ProbeFailure("the CA file " + caFile + " cannot be read");
    return context;
}

void expectHost(SSL& ssl, const std::string& host) {
    X509_VERIFY_PARAM* const expected = SSL_get0_param(&ssl);
    if (X509_VERIFY_PARAM_set1_ip_asc(expected, host.c_str()) == 1) return;
    SSL_set1_host(&ssl, host.c_str());
    SSL_set_tlsext_host_name(&ssl, host.c_str());
}

[[noreturn]] void throwHandshakeFailure() {
    const unsigned long error = ERR_peek_error();
    const int reason = ERR_GET_REASON(error);
    const char* const text = ERR_reason_error_string(error);
    const bool isOld = reason == SSL_R_UNSUPPORTED_PROTOCOL || reason == SSL_R_TLSV1_ALERT_PROTOCOL_VERSION;
    ERR_clear_error();
    if (isOld) throw ProbeFailure("the server does not support TLS 1.2 or later");
    throw ProbeFailure(std::string("the TLS handshake fails: ") +
                       (text != nullptr ? text : "unknown reason"));
}

void sendOutput(const PacketStream& stream, BIO* output) {
    std::string bytes(BIO_ctrl_pending(output), '\0');
    if (bytes.empty()) return;
    BIO_read(output, bytes.data(), static_cast<int>(bytes.size()));
    stream.send(bytes);
}

void exchangeMessages(const PacketStream& stream, SSL* ssl) {
    BIO* const input = BIO_new(BIO_s_mem());
    BIO* const output = BIO_new(BIO_s_mem());
    if (input == nullptr || output == nullptr) throw std::bad_alloc();
    SSL_set_bio(ssl, input, output);
    for (;;) {
        ERR_clear_error();
        const int result = SSL_connect(ssl);
        const bool isWaiting = result != 1 && SSL_get_error(ssl, result) == SSL_ERROR_WANT_READ;
        if (result != 1 && !isWaiting) throwHandshakeFailure();
        sendOutput(stream, output);
        if (result == 1) return;
        const std::string message = stream.receive("its part of the TLS handshake");
        BIO_write(input, message.data(), static_cast<int>(message.size()));
    }
}

}  // namespace

TlsResult shakeHands(const PacketStream& stream, const std::string& host, const std::string& caFile) {
    const Context context = makeContext(caFile);
    const Session session(SSL_new(context.get()));
    if (!session) throw std::bad_alloc();
    Verification verification{host, ""};
    SSL_set_app_data(session.get(), &verification);
    expectHost(*session, host);
    exchangeMessages(stream, session.get());
    const X509* const certificate = SSL_get0_peer_certificate(session.get());
    return {SSL_get_version(session.get()), verification.problems,
            certificate != nullptr ? timeOf(X509_get0_notAfter(certificate)) : 0};
}

}  // namespace hostlayer

#include "Tls.h"

#include <openssl/err.h>

namespace tds {
namespace {

constexpr std::size_t kRecordSize = 16384;  // plaintext bytes of a TLS record

void append(BIO* bio, ByteView data) {
    std::size_t written = 0;
    if (!data.empty() && BIO_write_ex(bio, data.data(), data.size(), &written) != 1) throw std::bad_alloc();
}

}  // namespace

std::string takeTlsErrors() {
    const unsigned long code = ERR_get_error();
    const char* reason = ERR_reason_error_string(code);
    ERR_clear_error();
    return reason != nullptr ? reason : "error " + std::to_string(code);
}

TlsSession::TlsSession(SSL_CTX& context)
    : m_ssl(SSL_new(&context)), m_received(BIO_new(BIO_s_mem())), m_output(BIO_new(BIO_s_mem())) {
    if (!m_ssl || m_received == nullptr || m_output == nullptr) throw std::bad_alloc();
    SSL_set_bio(m_ssl.get(), m_received, m_output);
    SSL_set_accept_state(m_ssl.get());
}

bool TlsSession::handshake(ByteView received) {
    append(m_received, received);
    ERR_clear_error();
    const int result = SSL_do_handshake(m_ssl.get());
    return result == 1 || SSL_get_error(m_ssl.get(), result) == SSL_ERROR_WANT_READ;
}

bool TlsSession::decrypt(ByteView received, Bytes& plain) {
    append(m_received, received);
    ERR_clear_error();
    char block[kRecordSize];
    std::size_t got = 0;
    while (SSL_read_ex(m_ssl.get(), block, sizeof block, &got) == 1) plain.append(block, got);
    const int end = SSL_get_error(m_ssl.get(), 0);
    if (end != SSL_ERROR_WANT_READ && end != SSL_ERROR_ZERO_RETURN)
        throw ProtocolError("TLS: " + takeTlsErrors());
    return end == SSL_ERROR_WANT_READ;
}

void TlsSession::encrypt(ByteView plain) {
    ERR_clear_error();
    std::size_t written = 0;
    if (!plain.empty() && SSL_write_ex(m_ssl.get(), plain.data(), plain.size(), &written) != 1)
        throw ProtocolError("TLS: " + takeTlsErrors());
}

Bytes TlsSession::takeOutput() {
    Bytes output(BIO_ctrl_pending(m_output), '\0');
    std::size_t got = 0;
    if (!output.empty() && BIO_read_ex(m_output, output.data(), output.size(), &got) != 1)
        throw std::bad_alloc();
    return output;
}

}  // namespace tds

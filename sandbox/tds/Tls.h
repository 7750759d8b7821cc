// TLS for the server's side of a connection, independent of the socket: the caller passes the received bytes
// in and sends the bytes that come out.
#pragma once

#include <openssl/ssl.h>

#include <memory>

#include "ByteReader.h"
#include "types/Finally.h"

namespace tds {

// Certificate, key and protocol versions for all connections of a server.
using TlsContext = std::unique_ptr<SSL_CTX, tsql::Deleter<&SSL_CTX_free>>;

// Returns the oldest entry of OpenSSL's error queue as a string and empties the queue.
std::string takeTlsErrors();

class TlsSession {
  public:
    // The context must outlive the session.
    explicit TlsSession(SSL_CTX& context);

    // Continues the handshake with a message from the client. Returns false if it failed; takeTlsErrors()
    // then has the reason, and takeOutput() an alert.
    bool handshake(ByteView received);
    bool isEstablished() const { return SSL_is_init_finished(m_ssl.get()) != 0; }

    // Decrypts what was received and appends it to `plain`. False after the client's close_notify. Throws
    // ProtocolError for a record that is not valid.
    bool decrypt(ByteView received, Bytes& plain);
    // Appends records to the output.
    void encrypt(ByteView plain);
    // Returns the bytes to send and removes them.
    Bytes takeOutput();

  private:
    std::unique_ptr<SSL, tsql::Deleter<&SSL_free>> m_ssl;
    BIO* m_received;  // owned by m_ssl, like m_output
    BIO* m_output;
};

}  // namespace tds

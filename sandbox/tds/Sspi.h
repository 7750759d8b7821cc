// Windows authentication: the tokens in LOGIN7 and in SSPI messages, [MS-TDS] 2.2.6.4 and 2.2.6.8, are those
// of GSSAPI (RFC 2744) with Kerberos, bare or in SPNEGO (RFC 4178).
#pragma once

#include <gssapi/gssapi.h>

#include <filesystem>

#include "ByteReader.h"

namespace tds {

// A keytab or a token that cannot be used. what() has the reason in GSSAPI's words.
struct SspiError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Owner of what GSSAPI has allocated.
template <typename T, auto Release>
struct GssOwner {
    GssOwner() = default;
    GssOwner(GssOwner&&) = delete;  // neither moved nor copied
    ~GssOwner() {
        OM_uint32 minor = 0;
        Release(&minor, &value);
    }
    T value{};
};

// Keys of the server's service principals. Thread-safe.
class Keytab {
  public:
    // Throws SspiError for a file that cannot be read or has no keys.
    explicit Keytab(const std::filesystem::path& file);
    gss_cred_id_t credentials() const { return m_credentials.value; }

  private:
    GssOwner<gss_cred_id_t, gss_release_cred> m_credentials;
};

inline void deleteContext(OM_uint32* minor, gss_ctx_id_t* context) {
    gss_delete_sec_context(minor, context, GSS_C_NO_BUFFER);
}

// Authentication of one client.
class SspiContext {
  public:
    // The keytab must outlive the context.
    explicit SspiContext(const Keytab& keytab) : m_keytab(keytab) {}

    // Accepts the client's next token and returns the token to send back, which may be empty. Throws
    // SspiError.
    Bytes accept(ByteView token);
    bool isComplete() const { return !m_client.empty(); }
    // The client's principal, for example "person@EXAMPLE.ORG"; empty until isComplete().
    const std::string& client() const { return m_client; }

  private:
    const Keytab& m_keytab;
    GssOwner<gss_ctx_id_t, deleteContext> m_context;
    std::string m_client;
};

}  // namespace tds

// Windows authentication: the tokens in LOGIN7 and in SSPI messages, [MS-TDS] 2.2.6.4 and 2.2.6.8, are those
// of GSSAPI (RFC 2744) with Kerberos, bare or in SPNEGO (RFC 4178).
#pragma once

#include <gssapi/gssapi.h>

#include <filesystem>
#include <memory>

#include "ByteReader.h"

namespace tds {

// A keytab or a token that cannot be used. what() has the reason in GSSAPI's words.
struct SspiError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Owner of what GSSAPI has allocated.
template <typename T, auto Release, auto... Options>
struct GssOwner {
    GssOwner() = default;
    GssOwner(GssOwner&&) = delete;  // neither moved nor copied
    ~GssOwner() {
        OM_uint32 minor = 0;
        Release(&minor, &value, Options...);
    }
    T value{};
};

// Keys of the server's service principals. Thread-safe.
using Keytab = GssOwner<gss_cred_id_t, gss_release_cred>;
// Throws SspiError for a file that cannot be read or has no keys.
std::unique_ptr<Keytab> openKeytab(const std::filesystem::path& file);

// Authentication of one client.
class SspiContext {
  public:
    // The keytab must outlive the context.
    explicit SspiContext(const Keytab& keytab) : m_keytab(keytab) {}

    // Accepts the client's next token and returns the token to send back, which may be empty. Throws
    // SspiError.
    Bytes accept(ByteView token);
    // The client's principal, for example "person@EXAMPLE.ORG"; empty until it is known.
    const std::string& client() const { return m_client; }

  private:
    const Keytab& m_keytab;
    GssOwner<gss_ctx_id_t, gss_delete_sec_context, GSS_C_NO_BUFFER> m_context;
    std::string m_client;
};

}  // namespace tds

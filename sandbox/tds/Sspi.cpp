#include "Sspi.h"

#include <gssapi/gssapi_ext.h>

namespace tds {
namespace {

// Owner of a buffer that GSSAPI has allocated.
class Buffer {
  public:
    Buffer() = default;
    ~Buffer() {
        OM_uint32 minor = 0;
        gss_release_buffer(&minor, &m_buffer);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    gss_buffer_t get() { return &m_buffer; }
    Bytes bytes() const {
        return m_buffer.length == 0 ? Bytes() : Bytes(static_cast<char*>(m_buffer.value), m_buffer.length);
    }

  private:
    gss_buffer_desc m_buffer = GSS_C_EMPTY_BUFFER;
};

// Owner of a name that GSSAPI has allocated.
struct Name {
    Name() = default;
    ~Name() {
        OM_uint32 minor = 0;
        gss_release_name(&minor, &value);
    }
    Name(const Name&) = delete;
    Name& operator=(const Name&) = delete;
    gss_name_t value = GSS_C_NO_NAME;
};

std::string statusText(OM_uint32 code, int type) {
    OM_uint32 minor = 0, more = 0;
    Buffer text;
    gss_display_status(&minor, code, type, GSS_C_NO_OID, &more, text.get());
    return text.bytes();
}

void check(OM_uint32 major, OM_uint32 minor, const std::string& what) {
    if (!GSS_ERROR(major)) return;
    std::string text = what + ": " + statusText(major, GSS_C_GSS_CODE);
    if (minor != 0) text += ": " + statusText(minor, GSS_C_MECH_CODE);
    throw SspiError(text);
}

}  // namespace

Keytab::Keytab(const std::filesystem::path& file) {
    gss_key_value_element_desc element{"keytab", file.c_str()};
    const gss_key_value_set_desc store{1, &element};
    OM_uint32 minor = 0;
    const OM_uint32 major =
        gss_acquire_cred_from(&minor, /*desired_name=*/GSS_C_NO_NAME, GSS_C_INDEFINITE, GSS_C_NO_OID_SET,
                              GSS_C_ACCEPT, &store, &m_credentials, nullptr, nullptr);
    check(major, minor, "the keytab " + file.string() + " cannot be used");
}

Keytab::~Keytab() {
    OM_uint32 minor = 0;
    gss_release_cred(&minor, &m_credentials);
}

SspiContext::~SspiContext() {
    OM_uint32 minor = 0;
    gss_delete_sec_context(&minor, &m_context, GSS_C_NO_BUFFER);
}

Bytes SspiContext::accept(ByteView token) {
    gss_buffer_desc input{token.size(), const_cast<char*>(token.data())};
    Buffer output;
    Name client;
    OM_uint32 minor = 0;
    const OM_uint32 major =
        gss_accept_sec_context(&minor, &m_context, m_keytab.credentials(), &input, GSS_C_NO_CHANNEL_BINDINGS,
                               &client.value, nullptr, output.get(), nullptr, nullptr, nullptr);
    check(major, minor, "Windows authentication failed");
    if (major == GSS_S_COMPLETE) {
        Buffer name;
        check(gss_display_name(&minor, client.value, name.get(), nullptr), minor, "the client has no name");
        m_client = name.bytes();
    }
    return output.bytes();
}

}  // namespace tds

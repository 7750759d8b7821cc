#include "Sspi.h"

#include <gssapi/gssapi_ext.h>

namespace tds {
namespace {

using Buffer = GssOwner<gss_buffer_desc, gss_release_buffer>;
using Name = GssOwner<gss_name_t, gss_release_name>;

Bytes bytesOf(const Buffer& buffer) {
    return {static_cast<const char*>(buffer.value.value), buffer.value.length};
}

std::string statusText(OM_uint32 code, int type) {
    OM_uint32 minor = 0, more = 0;
    Buffer text;
    gss_display_status(&minor, code, type, GSS_C_NO_OID, &more, &text.value);
    return bytesOf(text);
}

void check(OM_uint32 major, OM_uint32 minor, const std::string& what) {
    if (!GSS_ERROR(major)) return;
    std::string text = what + ": " + statusText(major, GSS_C_GSS_CODE);
    if (minor != 0) text += ": " + statusText(minor, GSS_C_MECH_CODE);
    throw SspiError(text);
}

}  // namespace

std::unique_ptr<Keytab> openKeytab(const std::filesystem::path& file) {
    gss_key_value_element_desc element{"keytab", file.c_str()};
    const gss_key_value_set_desc store{1, &element};
    auto keytab = std::make_unique<Keytab>();
    OM_uint32 minor = 0;
    const OM_uint32 major =
        gss_acquire_cred_from(&minor, /*desired_name=*/GSS_C_NO_NAME, GSS_C_INDEFINITE, GSS_C_NO_OID_SET,
                              GSS_C_ACCEPT, &store, &keytab->value, nullptr, nullptr);
    check(major, minor, "the keytab " + file.string() + " cannot be used");
    return keytab;
}

Bytes SspiContext::accept(ByteView token) {
    gss_buffer_desc input{token.size(), const_cast<char*>(token.data())};
    Buffer output;
    Name client;
    OM_uint32 minor = 0;
    const OM_uint32 major =
        gss_accept_sec_context(&minor, &m_context.value, m_keytab.value, &input, GSS_C_NO_CHANNEL_BINDINGS,
                               &client.value, nullptr, &output.value, nullptr, nullptr, nullptr);
    check(major, minor, "Windows authentication failed");
    if (major == GSS_S_COMPLETE) {
        Buffer name;
        check(gss_display_name(&minor, client.value, &name.value, nullptr), minor, "the client has no name");
        m_client = bytesOf(name);
    }
    return bytesOf(output);
}

}  // namespace tds

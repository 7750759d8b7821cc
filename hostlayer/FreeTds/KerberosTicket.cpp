#include "KerberosTicket.h"

#include <gssapi/gssapi.h>
#include <gssapi/gssapi_krb5.h>
#include <netdb.h>

#include <memory>

#include "FreeTdsConfiguration.h"

namespace freetds {
namespace {

std::string canonicalName(const std::string& host) {
    if (host.find('.') != std::string::npos) return host;
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_CANONNAME;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return host;
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
    const std::string name = found->ai_canonname != nullptr ? found->ai_canonname : "";
    return name.find('.') != std::string::npos ? name : host;
}

// The reason as Kerberos gives it, or GSSAPI's own.
std::string statusText(OM_uint32 major, OM_uint32 minor) {
    OM_uint32 ignored = 0, more = 0;
    gss_buffer_desc text = GSS_C_EMPTY_BUFFER;
    gss_display_status(&ignored, minor != 0 ? minor : major, minor != 0 ? GSS_C_MECH_CODE : GSS_C_GSS_CODE,
                       gss_mech_krb5, &more, &text);
    const std::string result(static_cast<const char*>(text.value), text.length);
    gss_release_buffer(&ignored, &text);
    return result;
}

std::string problemWith(const std::string& principal) {
    OM_uint32 minor = 0, ignored = 0;
    gss_buffer_desc text{principal.size(), const_cast<char*>(principal.data())};
    gss_name_t name = GSS_C_NO_NAME;
    gss_ctx_id_t context = GSS_C_NO_CONTEXT;
    gss_buffer_desc token = GSS_C_EMPTY_BUFFER;
    OM_uint32 major = gss_import_name(&minor, &text, GSS_KRB5_NT_PRINCIPAL_NAME, &name);
    if (!GSS_ERROR(major))
        major = gss_init_sec_context(&minor, GSS_C_NO_CREDENTIAL, &context, name, gss_mech_krb5,
                                     GSS_C_MUTUAL_FLAG, /*time_req=*/0, GSS_C_NO_CHANNEL_BINDINGS,
                                     GSS_C_NO_BUFFER, nullptr, &token, nullptr, nullptr);
    const std::string problem =
        GSS_ERROR(major) ? "No Kerberos ticket for " + principal + ": " + statusText(major, minor) : "";
    gss_release_buffer(&ignored, &token);
    gss_delete_sec_context(&ignored, &context, GSS_C_NO_BUFFER);
    gss_release_name(&ignored, &name);
    return problem;
}

// Returns the last value of a keyword that is not the first, without its braces.
std::string attribute(std::string_view text, const std::string& keyword) {
    const std::string start = ";" + keyword + "=";
    const std::size_t at = text.rfind(start);
    if (at == std::string_view::npos) return "";
    std::string_view value = text.substr(at + start.size());
    const bool isBraced = value.starts_with('{');
    value.remove_prefix(isBraced ? 1 : 0);
    return std::string(value.substr(0, value.find(isBraced ? "}" : ";")));
}

}  // namespace

std::string ticketProblemOf(const std::string& servicePrincipal) {
    return problemWith(servicePrincipal);
}

std::string ticketProblem(const std::string& host, const std::string& port) {
    return problemWith("MSSQLSvc/" + canonicalName(host) + ":" + port);
}

bool usesTicket(std::string_view connectionString) {
    return attribute(connectionString, "Trusted_Connection") == "yes";
}

std::string ticketProblem(std::string_view connectionString) {
    if (!usesTicket(connectionString)) return "";
    if (const std::string principal = attribute(connectionString, "ServerSPN"); !principal.empty())
        return problemWith(principal);
    const auto section = serverOfSection(attribute(connectionString, "Servername"));
    const std::string host = section ? section->host : attribute(connectionString, "Server");
    const std::string port = section ? section->port : attribute(connectionString, "Port");
    return host.empty() || port.empty() ? "" : ticketProblem(host, port);
}

}  // namespace freetds

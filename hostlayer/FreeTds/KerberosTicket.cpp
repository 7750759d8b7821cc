#include "KerberosTicket.h"

#include <dlfcn.h>
#include <gssapi/gssapi.h>
#include <gssapi/gssapi_krb5.h>
#include <netdb.h>

#include <memory>
#include <optional>
#include <type_traits>

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

// The functions of GSSAPI, whose library is loaded for the first ticket and stays: with the six libraries
// that it needs, it would take a tenth of the start of every program.
struct Gssapi {
    decltype(&::gss_import_name) importName;
    decltype(&::gss_init_sec_context) initSecContext;
    decltype(&::gss_display_status) displayStatus;
    decltype(&::gss_release_buffer) releaseBuffer;
    decltype(&::gss_delete_sec_context) deleteSecContext;
    decltype(&::gss_release_name) releaseName;
    gss_OID kerberos;
    gss_OID principalName;
};

// Returns nullopt if the library cannot be loaded; FreeTDS then has no Windows authentication either.
std::optional<Gssapi> loadGssapi() {
    void* library = ::dlopen("libgssapi_krb5.so.2", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return std::nullopt;
    bool isComplete = true;
    const auto load = [&](auto& target, const char* name) {
        target = reinterpret_cast<std::remove_reference_t<decltype(target)>>(::dlsym(library, name));
        isComplete = isComplete && target != nullptr;
    };
    Gssapi gssapi{};
    gss_OID* kerberos = nullptr;
    gss_OID* principalName = nullptr;
    load(gssapi.importName, "gss_import_name");
    load(gssapi.initSecContext, "gss_init_sec_context");
    load(gssapi.displayStatus, "gss_display_status");
    load(gssapi.releaseBuffer, "gss_release_buffer");
    load(gssapi.deleteSecContext, "gss_delete_sec_context");
    load(gssapi.releaseName, "gss_release_name");
    load(kerberos, "gss_mech_krb5");
    load(principalName, "GSS_KRB5_NT_PRINCIPAL_NAME");
    if (!isComplete) return std::nullopt;
    gssapi.kerberos = *kerberos;
    gssapi.principalName = *principalName;
    return gssapi;
}

// The reason as Kerberos gives it, or GSSAPI's own.
std::string statusText(const Gssapi& gssapi, OM_uint32 major, OM_uint32 minor) {
    OM_uint32 ignored = 0, more = 0;
    gss_buffer_desc text = GSS_C_EMPTY_BUFFER;
    gssapi.displayStatus(&ignored, minor != 0 ? minor : major, minor != 0 ? GSS_C_MECH_CODE : GSS_C_GSS_CODE,
                         gssapi.kerberos, &more, &text);
    const std::string result(static_cast<const char*>(text.value), text.length);
    gssapi.releaseBuffer(&ignored, &text);
    return result;
}

std::string problemWith(const std::string& principal) {
    static const std::optional<Gssapi> gssapi = loadGssapi();
    if (!gssapi) return "No Kerberos ticket for " + principal + ": libgssapi_krb5.so.2 cannot be loaded";
    OM_uint32 minor = 0, ignored = 0;
    gss_buffer_desc text{principal.size(), const_cast<char*>(principal.data())};
    gss_name_t name = GSS_C_NO_NAME;
    gss_ctx_id_t context = GSS_C_NO_CONTEXT;
    gss_buffer_desc token = GSS_C_EMPTY_BUFFER;
    OM_uint32 major = gssapi->importName(&minor, &text, gssapi->principalName, &name);
    if (!GSS_ERROR(major))
        major = gssapi->initSecContext(&minor, GSS_C_NO_CREDENTIAL, &context, name, gssapi->kerberos,
                                       GSS_C_MUTUAL_FLAG, /*time_req=*/0, GSS_C_NO_CHANNEL_BINDINGS,
                                       GSS_C_NO_BUFFER, nullptr, &token, nullptr, nullptr);
    const std::string problem =
        GSS_ERROR(major) ? "No Kerberos ticket for " + principal + ": " + statusText(*gssapi, major, minor)
                         : "";
    gssapi->releaseBuffer(&ignored, &token);
    gssapi->deleteSecContext(&ignored, &context, GSS_C_NO_BUFFER);
    gssapi->releaseName(&ignored, &name);
    return problem;
}

// Returns the value of the keyword's last attribute, without its braces; "" without the attribute. A
// semicolon must precede it, so that the string's first attribute is not found.
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

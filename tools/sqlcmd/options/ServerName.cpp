#include "options/ServerName.h"

#include <algorithm>
#include <charconv>

#include "text/Errors.h"
#include "text/Text.h"

namespace sqlcmd {
namespace {

[[noreturn]] void throwInvalidName(std::string_view text) {
    throw UsageError("'-S': '" + std::string(text) +
                     "' is not a server name. Give host, host\\instance or host,port.");
}

int parsePort(std::string_view digits, std::string_view text) {
    int port = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, port);
    if (error != std::errc{} || stop != end || port < 1 || port > 65535) throwInvalidName(text);
    return port;
}

}  // namespace

ServerName parseServerName(std::string_view text) {
    ServerName server;
    std::string_view rest = trimmed(text);
    if (equalsIgnoringCase(rest.substr(0, 4), "tcp:")) rest.remove_prefix(4);
    if (const auto comma = rest.rfind(','); comma != std::string_view::npos) {
        server.port = parsePort(trimmed(rest.substr(comma + 1)), text);
        rest = trimmed(rest.substr(0, comma));
    }
    if (const auto slash = rest.find('\\'); slash != std::string_view::npos) {
        server.instance = rest.substr(slash + 1);
        rest = rest.substr(0, slash);
        if (server.instance.empty()) throwInvalidName(text);
    }
    if (rest.starts_with('[') && rest.ends_with(']')) rest = rest.substr(1, rest.size() - 2);
    // An IPv6 address has more of them. FreeTDS would take "np:host" for a port of the host "np".
    const bool hasOneColon = std::count(rest.begin(), rest.end(), ':') == 1;
    if (rest == "." || equalsIgnoringCase(rest, "(local)")) rest = "localhost";
    if (rest.empty() || hasOneColon || rest.find_first_of(";{}[]=") != std::string_view::npos)
        throwInvalidName(text);
    server.host = rest;
    return server;
}

ServerName serverOf(const Options& options) {
    constexpr int kAdminPort = 1434;  // of a default instance
    ServerName server = parseServerName(options.server);
    if (!options.adminConnection || server.port != 0) return server;
    server.port = kAdminPort;
    return server;
}

}  // namespace sqlcmd

#include "ServerAddress.h"

#include <strings.h>

#include <charconv>

namespace hostlayer {
namespace {

bool isPort(std::string_view text) {
    unsigned int port = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, port);
    return error == std::errc() && stop == end && port >= 1 && port <= 65535;
}

}  // namespace

bool parseServer(std::string_view server, ServerAddress& address, std::string& problem) {
    constexpr std::string_view kTcp = "tcp:";
    if (server.size() >= kTcp.size() && ::strncasecmp(server.data(), kTcp.data(), kTcp.size()) == 0)
        server.remove_prefix(kTcp.size());
    if (const std::size_t comma = server.rfind(','); comma != std::string_view::npos) {
        address.port = server.substr(comma + 1);
        server = server.substr(0, comma);
        if (!isPort(address.port)) {
            problem = "The port of the server [" + std::string(server) + "] is not a number from 1 to 65535";
            return false;
        }
    }
    const std::size_t backslash = server.find('\\');
    address.host = server.substr(0, backslash);
    if (backslash != std::string_view::npos && address.port.empty())
        address.instance = server.substr(backslash + 1);
    if (address.host == "." || address.host == "(local)") address.host = "localhost";
    if (!address.host.empty()) return true;
    problem = "The server has no name";
    return false;
}

}  // namespace hostlayer

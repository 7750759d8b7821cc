#include "ConnectionString.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace hostlayer {
namespace {

constexpr const char* kDefaultPort = "1433";

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    const auto same = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

bool isPort(std::string_view text) {
    unsigned int port = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, port);
    return error == std::errc() && stop == end && port >= 1 && port <= 65535;
}

// The drivers differ in how they read a connection string.
struct Dialect {
    bool isFreeTds;

    // Microsoft's driver wants a closing brace in a value doubled. FreeTDS takes it as it is: the value ends
    // at the first closing brace that a semicolon or the string's end follows.
    bool append(std::string& text, std::string_view keyword, std::string_view value) const {
        if (isFreeTds && value.find("};") != std::string_view::npos) return false;
        text.append(keyword).append("={");
        for (const char character : value) text.append(character == '}' && !isFreeTds ? 2 : 1, character);
        text.append("};");
        return true;
    }

    // FreeTDS wants the port apart. An instance without a port is left to the driver, which asks the browser
    // service of that host for the instance's port.
    bool appendServer(std::string& text, const ServerAddress& server) const {
        std::string host = server.host;
        if (!server.instance.empty()) host += "\\" + server.instance;
        const std::string& port = server.port;
        if (!isFreeTds) return append(text, "Server", port.empty() ? host : host + "," + port);
        if (!append(text, "Server", host)) return false;
        if (server.instance.empty())
            text += "Port=" + (port.empty() ? std::string(kDefaultPort) : port) + ";";
        return true;
    }

    const char* encryption(bool isWanted) const {
        if (isFreeTds) return isWanted ? "Encryption=require;" : "";
        return isWanted ? "Encrypt=yes;" : "Encrypt=no;";
    }
};

std::size_t longestText(const ConnectionSettings& settings, const ConnectionRequest& request) {
    constexpr std::size_t kKeywords = 256;
    const ServerAddress& server = request.server;
    return kKeywords + settings.attributes.size() +
           2 * (settings.driver.size() + server.host.size() + server.instance.size() + server.port.size() +
                request.database.size() + request.user.size() + request.password.size());
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
            problem = "The port after the comma of the server [" + std::string(server) + "] is none";
            return false;
        }
    }
    const std::size_t backslash = server.find('\\');
    address.host = server.substr(0, backslash);
    if (backslash != std::string_view::npos && address.port.empty())
        address.instance = server.substr(backslash + 1);
    if (address.host == "." || address.host == "(local)") address.host = "localhost";
    if (address.host.empty()) problem = "No server is named";
    return !address.host.empty();
}

bool makeConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request,
                          std::string& text, std::string& problem) {
    const Dialect dialect{containsIgnoringCase(settings.driver, "tds")};
    std::string made;
    made.reserve(longestText(settings, request));  // nothing of a password is left behind where it has grown
    bool isDone = dialect.append(made, "Driver", settings.driver) &&
                  dialect.appendServer(made, request.server) &&
                  dialect.append(made, "Database", request.database);
    if (request.windowsAuthentication) {
        made += "Trusted_Connection=yes;";
    } else {
        isDone = isDone && dialect.append(made, "UID", request.user) &&
                 dialect.append(made, "PWD", request.password);
    }
    if (!isDone) {
        problem = "A value for the connection holds \"};\", which the FreeTDS driver cannot be given";
        return false;
    }
    // The store's own wish for encryption is the stronger one.
    if (!containsIgnoringCase(settings.attributes, "encrypt")) made += dialect.encryption(request.encrypt);
    made += settings.attributes;
    text = std::move(made);
    return true;
}

}  // namespace hostlayer

#include "ConnectionString.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "FreeTdsConfiguration.h"

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

enum class Encryption : std::uint8_t { kOff, kRequire, kVerify };

// Empty without a setting. False, with the reason in `problem`, for a setting that is unknown or that the
// attributes contradict.
bool parseEncryption(const ConnectionSettings& settings, std::optional<Encryption>& encryption,
                     std::string& problem) {
    if (settings.encryption.empty()) return true;
    if (containsIgnoringCase(settings.attributes, "encrypt")) {
        problem = "Both encrypt and odbcAttributes under [host] set the encryption; remove one of them";
        return false;
    }
    for (const auto& [name, value] : {std::pair("off", Encryption::kOff),
                                      {"require", Encryption::kRequire},
                                      {"verify", Encryption::kVerify}})
        if (settings.encryption == name) encryption = value;
    if (!encryption) problem = "encrypt under [host] must be \"verify\", \"require\" or \"off\"";
    return encryption.has_value();
}

// A driver's notation of attributes.
struct Dialect {
    bool isFreeTds;

    // Microsoft's driver follows ODBC and reads }} as a closing brace. FreeTDS reads braces literally: a
    // value ends at the first one that a semicolon or the end of the string follows. False for a value that
    // has no notation.
    bool append(std::string& text, std::string_view keyword, std::string_view value) const {
        if (isFreeTds && value.find("};") != std::string_view::npos) return false;
        text.append(keyword).append("={");
        for (const char character : value) text.append(character == '}' && !isFreeTds ? 2 : 1, character);
        text.append("};");
        return true;
    }

    // FreeTDS verifies a certificate only for a server of its configuration file.
    static bool appendVerifiedServer(std::string& text, const ServerAddress& server,
                                     const std::string& caFile) {
        const bool needsPort = server.instance.empty() && server.port.empty();
        const std::string section = freetds::encryptedSection(
            {server.host, server.instance, needsPort ? kDefaultPort : server.port, caFile});
        text += "Servername=" + section + ";";
        return !section.empty();
    }

    // FreeTDS has an attribute for the port. For an instance without a port, the driver asks the host's SQL
    // Server Browser service.
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

    const char* encryption(Encryption encryption) const {
        switch (encryption) {
            case Encryption::kOff:
                return isFreeTds ? "Encryption=off;" : "Encrypt=no;";
            case Encryption::kRequire:
                return isFreeTds ? "Encryption=require;" : "Encrypt=yes;TrustServerCertificate=yes;";
            case Encryption::kVerify:
                return isFreeTds ? "" : "Encrypt=yes;TrustServerCertificate=no;";
        }
        return "";
    }
    const char* requestedEncryption(bool encrypt) const {
        if (isFreeTds) return encrypt ? "Encryption=require;" : "";
        return encrypt ? "Encrypt=yes;" : "Encrypt=no;";
    }
};

// Upper bound of the connection string's length: every character may be doubled.
std::size_t longestConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request) {
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

bool makeConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request,
                          std::string& text, std::string& problem) {
    const Dialect dialect{containsIgnoringCase(settings.driver, "tds")};
    std::optional<Encryption> encryption;
    if (!parseEncryption(settings, encryption, problem)) return false;
    const bool needsSection = dialect.isFreeTds && encryption == Encryption::kVerify;
    std::string result;
    result.reserve(longestConnectionString(settings, request));  // growing would leave copies of the password
    bool isRepresentable =
        dialect.append(result, "Driver", settings.driver) &&
        (needsSection ? Dialect::appendVerifiedServer(result, request.server, settings.caFile)
                      : dialect.appendServer(result, request.server)) &&
        dialect.append(result, "Database", request.database);
    if (request.windowsAuthentication) {
        result += "Trusted_Connection=yes;";
    } else {
        isRepresentable = isRepresentable && dialect.append(result, "UID", request.user) &&
                          dialect.append(result, "PWD", request.password);
    }
    if (!isRepresentable) {
        problem = "A value of the connection contains \"};\", for which the FreeTDS driver has no notation";
        return false;
    }
    // The store's settings for encryption take precedence.
    if (encryption)
        result += dialect.encryption(*encryption);
    else if (!containsIgnoringCase(settings.attributes, "encrypt"))
        result += dialect.requestedEncryption(request.encrypt);
    result += settings.attributes;
    text = std::move(result);
    return true;
}

}  // namespace hostlayer

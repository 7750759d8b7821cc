#include "ConnectionString.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "FreeTdsConfiguration.h"

namespace hostlayer {
namespace {

constexpr std::size_t kLongestDriver = 1000;  // unixODBC copies the driver to a buffer without a check

bool containsIgnoringCase(std::string_view text, std::string_view part) {
    const auto same = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
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

// Returns the section of FreeTDS's configuration file for a server whose certificate is verified, which
// FreeTDS does for servers of that file only. Empty, with the reason in `problem`, if the file cannot hold
// it.
std::string verifiedServer(const ServerAddress& server, const std::string& caFile, std::string& problem) {
    const bool needsPort = server.instance.empty() && server.port.empty();
    std::string section = freetds::encryptedSection(
        {server.host, server.instance, needsPort ? kDefaultPort : server.port, caFile});
    if (section.empty())
        problem =
            "FreeTDS cannot verify the server: its name is too long or has a '#' or ';', it or caFile under "
            "[host] has a control character, caFile cannot be opened, or /proc is missing";
    return section;
}

// Upper bound of the connection string's length: every character may be doubled.
std::size_t longestConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request) {
    constexpr std::size_t kKeywords = 256;
    const ServerAddress& server = request.server;
    return kKeywords + settings.attributes.size() +
           2 * (settings.driver.size() + server.host.size() + server.instance.size() + server.port.size() +
                request.database.size() + request.user.size() + request.password.size());
}

}  // namespace

bool makeConnectionString(const ConnectionSettings& settings, const ConnectionRequest& request,
                          std::string& text, std::string& problem) {
    if (settings.driver.size() > kLongestDriver) {
        problem = "odbcDriver under [host] is longer than " + std::to_string(kLongestDriver) + " bytes";
        return false;
    }
    const Dialect dialect{containsIgnoringCase(settings.driver, "tds")};
    std::optional<Encryption> encryption;
    if (!parseEncryption(settings, encryption, problem)) return false;
    const bool needsSection = dialect.isFreeTds && encryption == Encryption::kVerify;
    const std::string section =
        needsSection ? verifiedServer(request.server, settings.caFile, problem) : std::string();
    if (needsSection && section.empty()) return false;
    std::string result;
    result.reserve(longestConnectionString(settings, request));  // growing would leave copies of the password
    bool isRepresentable = dialect.append(result, "Driver", settings.driver);
    if (needsSection)
        result += "Servername=" + section + ";";
    else
        isRepresentable = isRepresentable && dialect.appendServer(result, request.server);
    isRepresentable = isRepresentable && dialect.append(result, "Database", request.database);
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

std::optional<ProbeTarget> probeTargetOf(std::string_view connectionString) {
    using Demand = ProbeTarget::Demand;
    // Driver and server are the first attributes. A value may look like an attribute, but holds no "};".
    const auto valueBetween = [&](std::string_view start, std::string_view end) {
        const std::size_t at = connectionString.find(start);
        if (at == std::string_view::npos) return std::string();
        const std::size_t from = at + start.size();
        return std::string(connectionString.substr(from, connectionString.find(end, from) - from));
    };
    if (!containsIgnoringCase(valueBetween("Driver={", "};"), "tds")) return std::nullopt;
    if (const auto server = freetds::serverOfSection(valueBetween("};Servername=", ";")))
        return server->port.empty() ? std::nullopt
                                    : std::optional(ProbeTarget{.host = server->host,
                                                                .port = server->port,
                                                                .demand = Demand::kVerifiedServer,
                                                                .caFile = server->caFile});
    ProbeTarget target{.host = valueBetween("Server={", "};"), .port = valueBetween("};Port=", ";")};
    if (containsIgnoringCase(connectionString, "encryption=require")) target.demand = Demand::kEncryption;
    if (containsIgnoringCase(connectionString, "encryption=off")) target.demand = Demand::kNoEncryption;
    if (target.host.empty() || target.port.empty()) return std::nullopt;
    return target;
}

}  // namespace hostlayer

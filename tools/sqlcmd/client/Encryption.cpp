#include "client/Encryption.h"

#include "FreeTdsConfiguration.h"
#include "text/Errors.h"

namespace sqlcmd {
namespace {

freetds::Encryption inFreeTds(Encryption encryption) {
    if (encryption == Encryption::Off) return freetds::Encryption::Off;
    return encryption == Encryption::Verify ? freetds::Encryption::Verify : freetds::Encryption::Require;
}

}  // namespace

Encryption encryptionOf(const Options& options) {
    const bool isTrusted = options.encryption == Encryption::Verify && options.trustCertificate;
    return isTrusted ? Encryption::Require : options.encryption;
}

std::string encryptedServer(const ServerName& server, const Options& options) {
    constexpr const char* kDefaultPort = "1433";
    const bool hasPort = server.port != 0 || server.instance.empty();
    const std::string port = server.port != 0 ? std::to_string(server.port) : kDefaultPort;
    const std::string section = freetds::encryptedSection({server.host, server.instance, hasPort ? port : "",
                                                           options.caFile, inFreeTds(encryptionOf(options))});
    if (section.empty())
        throw ToolError("Sqlcmd: Error: FreeTDS cannot verify a server with this name or this CA file.");
    return section;
}

}  // namespace sqlcmd

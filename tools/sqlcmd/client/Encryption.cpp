#include "client/Encryption.h"

#include "FreeTdsConfiguration.h"
#include "ServerAddress.h"
#include "text/Errors.h"

namespace sqlcmd {
namespace {

freetds::Encryption inFreeTds(Encryption encryption) {
    if (encryption == Encryption::Off) return freetds::Encryption::Off;
    return encryption == Encryption::Verify ? freetds::Encryption::Verify : freetds::Encryption::Require;
}

std::string portOf(const ServerName& server) {
    return server.port != 0 ? std::to_string(server.port) : hostlayer::kDefaultPort;
}

}  // namespace

Encryption encryptionOf(const Options& options) {
    const bool isTrusted = options.encryption == Encryption::Verify && options.trustCertificate;
    return isTrusted ? Encryption::Require : options.encryption;
}

std::string encryptedServer(const ServerName& server, const Options& options) {
    const bool hasPort = server.port != 0 || server.instance.empty();
    const std::string port = portOf(server);
    const std::string section = freetds::encryptedSection({server.host, server.instance, hasPort ? port : "",
                                                           options.caFile, inFreeTds(encryptionOf(options))});
    if (section.empty())
        throw ToolError("Sqlcmd: Error: FreeTDS cannot verify a server with this name or this CA file.");
    return section;
}

hostlayer::ProbeTarget probeTarget(const ServerName& server, const Options& options) {
    using Demand = hostlayer::ProbeTarget::Demand;
    hostlayer::ProbeTarget target{.host = server.host, .port = portOf(server)};
    switch (encryptionOf(options)) {
        case Encryption::Default:
            return target;
        case Encryption::Off:
            target.demand = Demand::kNoEncryption;
            return target;
        case Encryption::Require:
            target.demand = Demand::kEncryption;
            return target;
        case Encryption::Verify:
            break;
    }
    target.demand = Demand::kVerifiedServer;
    target.caFile = options.caFile;
    return target;
}

}  // namespace sqlcmd
